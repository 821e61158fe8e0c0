#include "command/Replay.h"

#include <memory>
#include <optional>

#include "change/ChangeReader.h"
#include "document/Configuration.h"
#include "session/Answers.h"
#include "session/Session.h"
#include "state/Recording.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/LineReader.h"
#include "text/OutputFile.h"
#include "tracing/Tracing.h"

namespace Host {
namespace {

class Run {
 public:
  Run(const Trees& trees, Kel::Seconds time, ByteSink& out)
      : clock_(time),
        translation_(trees),
        session_(trees, translation_, clock_),
        answers_(out, trees, session_) {}

  void start() { translation_.start(); }
  void record(Recording& recording) { session_.addLedger(recording); }
  /// A line of the log: one of a file has been checked before, others are checked now.
  void line(std::size_t number, std::string_view text) {
    if (isBlank(text)) {
      return;
    }
    Change change;
    const auto faults = reader_.read(text, change);
    if (!faults.empty()) {
      session_.unreadable();
      answers_.error(number, inLine(text, faults.front()));
    } else if (const auto error = session_.apply(change)) {
      answers_.error(number, *error);
    } else if (change.show.any()) {
      answers_.answer(number, change.show);
    }
  }
  void end() { answers_.end(); }
  bool anythingWrong() const { return answers_.anythingWrong(); }

 private:
  VirtualClock clock_;
  Translation translation_;
  Session session_;
  Answers answers_;
  ChangeReader reader_;
};

/// The log, all of whose lines are well-formed; null when there was a fault, which is reported.
std::unique_ptr<SourceText> checkedLog(const std::string& file, Report& report,
                                       Progress& progress) {
  std::string why;
  auto source = SourceText::read(file, why);
  if (source == nullptr) {
    progress.end();
    report.problem(file, why);
    return nullptr;
  }
  progress.begin(concat({"checking ", source->name()}), source->text().size());
  std::vector<Fault> all;
  ChangeReader reader;
  Lines lines(source->text());
  while (const auto line = lines.next()) {
    if (isBlank(*line)) {
      continue;
    }
    const auto begin = static_cast<std::size_t>(line->data() - source->text().data());
    progress.done().store(begin, std::memory_order_relaxed);
    Change change;
    for (Fault& fault : reader.read(*line, change)) {
      fault.offset += begin;
      all.push_back(std::move(fault));
    }
    if (all.size() >= report.room()) {
      break;
    }
  }
  if (!all.empty()) {
    progress.end();
    report.faults(*source, all);
    return nullptr;
  }
  return source;
}

}  // namespace

int replay(const ReplayRequest& request, const RunOptions& options, const Console& console) {
  Report report(console.err, options.color);
  const bool live = request.log.empty() || request.log == "-";
  // A person who types lines needs no progress.
  Progress progress(console.err, options.progress && !live);
  const Trees trees;
  readConfiguration(request.configs, trees, report, progress);
  if (!request.leftOver.empty()) {
    readLeftOver(request.leftOver, trees, report, progress);
  }
  const auto log = live || report.room() == 0 ? nullptr : checkedLog(request.log, report, progress);
  if (report.errors() != 0) {
    report.sum("nothing was applied");
    return kWrongInput;
  }

  std::optional<OutputFile> file;
  if (!options.output.empty()) {
    file.emplace(options.output);
  }
  Tracing trace(options);
  std::optional<Recording> recording;
  if (!request.record.empty()) {
    recording.emplace(request.record, [](const std::string& why) { throw OutputError(why); });
  }
  Run run(trees, request.time, file ? static_cast<ByteSink&>(*file) : console.out);
  if (recording) {
    run.record(*recording);
  }
  if (request.start) {
    progress.begin("translating", 0);
    run.start();
  }
  if (live) {
    InputLines lines;
    while (const auto line = lines.next()) {
      run.line(lines.number(), *line);
    }
  } else {
    progress.begin(concat({"replaying ", log->name()}), log->text().size());
    Lines lines(log->text());
    while (const auto line = lines.next()) {
      progress.done().store(static_cast<std::size_t>(line->data() - log->text().data()),
                            std::memory_order_relaxed);
      run.line(lines.number(), *line);
    }
  }
  run.end();
  trace.end();  // how the trees are taken down again is no part of a replay
  if (file) {
    file->commit();
  }
  trace.check();
  return run.anythingWrong() ? kDifferent : kDone;
}

}  // namespace Host
