#include "agent/Trials.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <csignal>

#include "agent/TrialRun.h"
#include "text/Concat.h"
#include "text/Reply.h"

namespace Host {
namespace {

/// The life of the child.
[[noreturn]] void live(int pipe, Engine& engine, const Change& change) {
  try {
    DescriptorSink(pipe, "a trial").write(tryOut(engine, change));
  } catch (const std::exception&) {
    ::_exit(1);  // what is missing of its answer tells the agent
  }
  ::_exit(0);
}

}  // namespace

Trials::Trial::Trial(Client& from, std::size_t number, Engine& engine, const Change& change,
                     Loop& loop)
    : from_(from), number_(number), loop_(loop) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    failWith("no pipe for a trial");
  }
  pipe_ = Descriptor(ends[0]);
  const Descriptor other(ends[1]);
  child_ = ::fork();
  if (child_ == 0) {
    live(other.number(), engine, change);
  }
  if (child_ < 0) {
    failWith("no process for a trial");
  }
  loop_.add(pipe_.number(), EPOLLIN, *this);
}

Trials::Trial::~Trial() {
  if (child_ > 0) {
    loop_.remove(pipe_.number());
    ::kill(child_, SIGKILL);  // nothing happens to one that has ended
    ::waitpid(child_, nullptr, 0);
  }
}

void Trials::Trial::ready(std::uint32_t /*events*/) {
  std::array<char, 65536> piece{};
  const ssize_t got = ::read(pipe_.number(), piece.data(), piece.size());
  if (got > 0) {
    said_.append(piece.data(), static_cast<std::size_t>(got));
  }
  over_ = over_ || got == 0;
}

void Trials::Trial::answer() {
  Reply reply(from_.output(), number_);
  from_.holdIs(false);
  if (std::ranges::count(said_, '\n') != 3) {
    const bool late = !over_;
    return reply.error(late ? concat({"this line could not be tried out within ",
                                      std::to_string(kLongest.count()), " seconds"})
                            : "the process that has tried this line out has broken down; applied, "
                              "the line may end the agent");
  }
  const std::size_t first = said_.find('\n');
  const std::size_t second = said_.find('\n', first + 1);
  const std::string_view said = said_;
  const std::string_view error = said.substr(second + 1, said.size() - second - 2);
  reply.json().name("changes");
  reply.json().spelled(said.substr(0, first));
  reply.json().name("warnings");
  reply.json().spelled(said.substr(first + 1, second - first - 1));
  if (error != "null") {
    reply.json().name("error");
    reply.json().spelled(error);
  }
  reply.end();
}

void Trials::add(Client& from, std::size_t number, const Change& change) {
  try {
    trials_.emplace_back(from, number, engine_, change, loop_);
    from.holdIs(true);
  } catch (const std::runtime_error& error) {
    Reply(from.output(), number).error(error.what());
  }
}

void Trials::drop(const Client& from) {
  trials_.remove_if([&](const Trial& trial) { return trial.isOf(from); });
}

void Trials::look() {
  trials_.remove_if([](Trial& trial) {
    if (trial.isOver()) {
      trial.answer();
    }
    return trial.isOver();
  });
}

std::optional<std::chrono::milliseconds> Trials::patience() const {
  if (trials_.empty()) {
    return std::nullopt;
  }
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(trials_.front().end() - Clock::now());
  return std::max(left, std::chrono::milliseconds(0));
}

}  // namespace Host
