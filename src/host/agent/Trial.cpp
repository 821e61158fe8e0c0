#include "agent/Trial.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <set>

#include "Kel/TextTrace.h"
#include "Pario/Pario.h"
#include "observe/ChangeFeed.h"
#include "protocol/Descriptor.h"
#include "text/Concat.h"
#include "text/JsonWriter.h"
#include "text/LineReader.h"

namespace Host {
namespace {

/// Writes what changes once the first picture is over.
class Changes : public EventReceiver {
 public:
  explicit Changes(JsonWriter& json) : json_(json) {}
  void pictureIsOver() { told_ = true; }

  void event(const Event& event) override {
    if (told_) {
      json_.openRecord();
      writeMembers(json_, event);
      json_.closeRecord();
    }
  }

 private:
  JsonWriter& json_;
  bool told_ = false;
};

std::set<std::string> found(const Engine& engine) {
  std::set<std::string> texts;
  for (const Difference& each : engine.session().audit()) {
    texts.insert(concat({nameOf(each.kind), ": ", each.path, ": ", each.why}));
  }
  return texts;
}

/// In the child: three lines of JSON, the changes, the warnings, and the error if there is one.
void tryOut(ByteSink& out, Engine& engine, const Change& change) {
  Kel::TextTrace::facility("VelaPolicyMonitor").levelsAre(0);
  Pario::binaryLevelsAre(0);
  engine.forgetLedgers();
  const std::set<std::string> before = found(engine);
  JsonWriter json(out, Layout::compact);
  json.openArray();
  Changes changes(json);
  ChangeFeed feed(engine.trees());
  feed.add(changes, {});
  changes.pictureIsOver();
  const auto error = engine.apply(change);
  feed.remove(changes);
  json.closeArray();
  json.endLine();
  json.openArray();
  for (const std::string& each : found(engine)) {
    if (!before.contains(each)) {
      json.text(each);
    }
  }
  json.closeArray();
  json.endLine();
  if (error) {
    json.text(*error);
    json.endLine();
  }
}

[[noreturn]] void runChild(int pipe, Engine& engine, const Change& change) {
  try {
    DescriptorSink out(pipe, "the agent");
    tryOut(out, engine, change);
  } catch (...) {
    ::_exit(1);
  }
  ::_exit(0);
}

}  // namespace

void writeTrial(JsonWriter& json, Engine& engine, const Change& change) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw OutputError(concat({"no pipe to try it out: ", std::strerror(errno)}));
  }
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t child = ::fork();
  if (child == 0) {
    runChild(writing.number(), engine, change);
  }
  writing = Descriptor();
  if (child < 0) {
    throw OutputError(concat({"no process to try it out in: ", std::strerror(errno)}));
  }
  InputLines lines(reading.number(), "the trial");
  std::array<std::string, 3> parts;
  for (std::string& part : parts) {
    part = lines.next().value_or("");
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (status != 0) {
    throw OutputError(WIFSIGNALED(status) ? concat({"the trial was ended by signal ",
                                                    std::to_string(WTERMSIG(status))})
                                          : "the trial has failed");
  }
  constexpr std::array<std::string_view, 3> kNames{"changes", "warnings", "error"};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (!parts[i].empty()) {
      json.name(kNames[i]);
      json.spelled(parts[i]);
    }
  }
}

}  // namespace Host
