#include "model/reference/Run.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "model/reference/Comparison.h"
#include "model/reference/Ending.h"
#include "model/reference/Generator.h"

namespace Reference {
namespace {

// Where the logs part, with the line before.
Text logDifference(const Text& model, const Text& library) {
  std::size_t at = 0;
  while (at != model.size() && at != library.size() && model[at] == library[at]) {
    ++at;
  }
  const std::size_t before = at == 0 ? Text::npos : model.rfind('\n', at - 1);
  const std::size_t begin = before == Text::npos ? 0 : before + 1;
  const std::size_t last = begin < 2 ? Text::npos : model.rfind('\n', begin - 2);
  const Text common = begin == 0 ? Text("(nothing)\n")
                                 : model.substr(last == Text::npos ? 0 : last + 1,
                                                begin - (last == Text::npos ? 0 : last + 1));
  const auto lineAt = [begin](const Text& log) {
    return begin >= log.size() ? Text("(the end)")
                               : log.substr(begin, log.find('\n', begin) - begin);
  };
  return "the logs part\n  after     " + common + "  expected  " + lineAt(model) +
         "\n  got       " + lineAt(library);
}

// So that operations that end the process can be told and left out like others. `done` becomes how
// many were done, up to the difference or the end.
bool failsInAProcessOfItsOwn(const std::vector<Operation>& operations, const Seen& seen,
                             std::size_t& done) {
  done = operations.size();
  std::array<int, 2> pipes{};
  if (::pipe(pipes.data()) != 0) {
    return false;
  }
  const pid_t child = ::fork();
  if (child == 0) {
    static_cast<void>(::close(STDERR_FILENO));
    const Outcome outcome = run(operations, seen, 1);
    const bool told =
        ::write(pipes[1], &outcome.operations, sizeof outcome.operations) == sizeof done;
    ::_exit(told && outcome.difference.empty() ? 0 : 1);
  }
  ::close(pipes[1]);
  const bool told = ::read(pipes[0], &done, sizeof done) == sizeof done;
  ::close(pipes[0]);
  int status = 0;
  return ::waitpid(child, &status, 0) == child && (!told || status != 0);
}

}  // namespace

Outcome run(const std::vector<Operation>& operations, const Seen& seen, std::size_t every) {
  Outcome outcome;
  ModelSide model(seen.journal);
  LibrarySide library(seen);
  const auto step = [&](const auto& each, bool compareAll) {
    model.world.log.clear();
    model.world.refusals.clear();
    library.log.clear();
    library.time = static_cast<double>(++outcome.operations);
    model.world.time = std::to_string(outcome.operations) + ".000000";
    each(model);
    library.refusals = model.world.refusals;
    if (model.world.ended) {
      ++outcome.endings;
      const Ending ending = endingOf(library, [&] { each(library); });
      outcome.difference = !ending.byItself ? "the process should have ended, and has not"
                           : model.world.log != ending.log
                               ? logDifference(model.world.log, ending.log)
                           : ending.said.find(model.world.message) == Text::npos
                               ? "the process has ended and said " + ending.said
                               : Text();
      return false;
    }
    each(library);
    if (model.world.log != library.log) {
      outcome.difference = logDifference(model.world.log, library.log);
    } else if (compareAll) {
      ++outcome.comparisons;
      outcome.difference = differenceOf(model, library);
    }
    return outcome.difference.empty();
  };
  for (const Operation& operation : operations) {
    const bool last = &operation == &operations.back();
    if (!step([&](auto& side) { side.apply(operation); },
              last || (outcome.operations + 1) % every == 0)) {
      break;
    }
  }
  if (outcome.difference.empty() && !model.world.ended) {
    step([](auto& side) { side.close(); }, true);
    --outcome.operations;
  }
  if (outcome.difference.empty() && seen.binary && library.traced() != library.binaryTraced()) {
    outcome.difference =
        "of the two traces " + logDifference(library.traced(), library.binaryTraced());
  }
  outcome.hits = std::move(model.world.hits);
  return outcome;
}

std::vector<Operation> operationsOf(std::uint64_t seed, std::size_t count, Seen& seen) {
  Generator generator(seed);
  seen = generator.seen();
  std::vector<Operation> operations(count);
  const std::vector<Operation> ending = generator.ending();
  const std::size_t ends = count < ending.size() ? count : count - ending.size();
  for (std::size_t at = 0; at != count; ++at) {
    operations[at] = at < ends ? generator.next() : ending[at - ends];
  }
  return operations;
}

std::vector<Operation> calmOperationsOf(std::uint64_t seed, std::size_t count) {
  Generator generator(seed, true);
  std::vector<Operation> operations(count);
  for (Operation& operation : operations) {
    operation = generator.next();
  }
  return operations;
}

std::vector<Operation> shrunk(std::vector<Operation> operations, const Seen& seen) {
  const auto fails = [seen](const std::vector<Operation>& some, std::size_t& done) {
    return failsInAProcessOfItsOwn(some, seen, done);
  };
  std::size_t done = 0;
  if (!fails(operations, done)) {
    return operations;
  }
  operations.resize(std::min(done, operations.size()));
  // Leaves out pieces, from halves down to single ones, as long as the rest still differs.
  for (std::size_t piece = std::max<std::size_t>(operations.size() / 2, 1);;) {
    bool left = false;
    for (std::size_t at = 0; at < operations.size();) {
      std::vector<Operation> rest = operations;
      const auto from = rest.begin() + static_cast<std::ptrdiff_t>(at);
      rest.erase(from, from + static_cast<std::ptrdiff_t>(std::min(piece, rest.size() - at)));
      if (fails(rest, done)) {
        rest.resize(std::min(done, rest.size()));
        operations = std::move(rest);
        left = true;
      } else {
        at += piece;
      }
    }
    if (piece > 1) {
      piece /= 2;
    } else if (!left) {
      break;
    }
  }
  // The same within what observers do.
  for (Operation& operation : operations) {
    for (std::size_t at = 0; at < operation.nested.size();) {
      const Operation without = operation.nested[at];
      operation.nested.erase(operation.nested.begin() + static_cast<std::ptrdiff_t>(at));
      if (!fails(operations, done)) {
        operation.nested.insert(operation.nested.begin() + static_cast<std::ptrdiff_t>(at),
                                without);
        ++at;
      }
    }
  }
  return operations;
}

}  // namespace Reference
