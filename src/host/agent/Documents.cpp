#include "agent/Documents.h"

#include <ostream>
#include <sstream>

#include "change/TreeComparison.h"
#include "document/Configuration.h"

namespace Host {
namespace {

using Texts = std::vector<std::unique_ptr<SourceText>>;

/// For what has been read before.
void fillAgain(const Trees& trees, const Texts& texts) {
  std::ostringstream nothing;
  Report report(nothing, false);
  Progress progress(nothing, false);
  for (const auto& text : texts) {
    readConfiguration(*text, trees, report, progress);
  }
}

}  // namespace

bool Documents::read(const Trees& trees, Report& report, Progress& progress) {
  return read(texts_, trees, report, progress);
}

bool Documents::read(Texts& texts, const Trees& trees, Report& report, Progress& progress) const {
  for (const std::string& file : files_) {
    std::string why;
    if (report.room() == 0) {
      break;
    }
    auto text = SourceText::read(file, why);
    if (text == nullptr) {
      progress.end();
      report.problem(file, why);
    } else {
      readConfiguration(*text, trees, report, progress);
      texts.push_back(std::move(text));
    }
  }
  return report.errors() == 0;
}

Documents::Outcome Documents::readAgain(Engine& engine) {
  std::ostringstream said;
  Report report(said, false);
  Progress progress(said, false);
  Texts texts;
  const Trees after;
  if (!read(texts, after, report, progress)) {
    report.sum("the agent goes on as before");
    diary_.stream() << said.str() << std::flush;
    return {0, said.str().substr(0, said.str().find('\n'))};
  }
  const std::size_t differing = this->differing(texts);
  if (differing == 0) {
    sayThatNothingDiffers();
    return {};
  }
  const Trees before;
  fillAgain(before, texts_);
  Outcome outcome{differing, apply(before, after, engine)};
  if (outcome.error.empty()) {
    texts_ = std::move(texts);
  }
  return outcome;
}

void Documents::sayThatNothingDiffers() {
  diary_.say({"read the documents again: nothing differs"});
}

bool Documents::haveChanged() const {
  std::string why;
  Texts texts;
  for (const std::string& file : files_) {
    texts.push_back(SourceText::read(file, why));
  }
  return differing(texts) != 0;
}

/// A document that cannot be read differs.
std::size_t Documents::differing(const Texts& texts) const {
  std::size_t count = 0;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    count += texts[i] == nullptr || texts[i]->text() != texts_[i]->text() ? 1 : 0;
  }
  return count;
}

std::string Documents::apply(const Trees& before, const Trees& after, Engine& engine) {
  const Change change = TreeComparison(before, after, engine.trees()).run();
  if (change.deletes.empty() && change.updates.empty()) {
    sayThatNothingDiffers();
    return "";
  }
  auto error = engine.apply(change);
  try {
    if (!error && keeper_) {
      keeper_(after);
    }
  } catch (const std::exception& failure) {
    error = failure.what();
  }
  diary_.say({"read the documents again: deletions: ", std::to_string(change.deletes.size()),
              ", writes: ", std::to_string(change.updates.size()), error ? "; error: " : "",
              error ? *error : ""});
  return error.value_or("");
}

}  // namespace Host
