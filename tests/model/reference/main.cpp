#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string_view>

#include "model/reference/ModelSide.h"
#include "model/reference/Run.h"
#include "model/reference/Scratch.h"
#include "model/reference/Soak.h"
#include "model/reference/Starve.h"
#include "model/reference/Worlds.h"

namespace {

using namespace Reference;  // NOLINT(google-build-using-namespace): this is its program

constexpr const char* kUsage = R"(usage: reference random  FROM-TO OPERATIONS EVERY [SITES LEAST]
       reference scratch FROM-TO OPERATIONS EVERY
       reference worlds  DEPTH [PART PARTS]
       reference prove   SECONDS FIRST
       reference shrink  SEED OPERATIONS
       reference soak    OPERATIONS [SEED]
       reference lines   SEED OPERATIONS LOG
       reference starve  FROM-TO OPERATIONS

Sets the library beside the reference model, the state machines' second implementation.

  random   does OPERATIONS operations for each seed FROM to TO to a world of either, compares trace
           lines and notifications after each, the whole worlds after each EVERY-th. Fails at the
           first difference, which is shrunk and printed; and, given SITES, when one of the trace
           sites and branches listed there was come by less than LEAST times (a file that is not
           there yet is written, with those that were not; the others are printed)
  scratch  the same for a translation that has followed every change beside a fresh one, after each
           EVERY-th operation
  worlds   does all sequences of DEPTH out of 16 operations, in a tiny world of each tree; given
           PART and PARTS, only that part of them
  prove    random with one seed after the other, FIRST at first, for so long
  shrink   finds and prints the fewest operations of a seed that still differ or end the process
  lines    prints calm operations of a seed as change lines for vpm replay, those that there are
           lines for, and writes what the model logs of them into the file LOG
  starve   makes each allocation of each operation fail, once and with all behind it, in processes of
           their own; of odd seeds the operations are calm, and it is compared with a fresh translation
           what then becomes of the world
  soak     does so many changes of version 1 and of the records to one world of the library, without
           the model. Fails when the resident memory has grown by more than 1 % since a tenth of
           them, or when the time that 99 of 100 changes stay below is by more than 5 % that of a
           fresh world
)";

struct Arguments {
  int count;
  char** words;

  std::size_t number(int at, std::size_t otherwise) const {
    return at < count ? std::strtoull(words[at], nullptr, 10) : otherwise;
  }
  std::pair<std::uint64_t, std::uint64_t> seeds(int at) const {
    char* end = nullptr;
    const std::uint64_t from = std::strtoull(words[at], &end, 10);
    return {from, *end == '-' ? std::strtoull(end + 1, nullptr, 10) : from};
  }
};

void print(const std::vector<Operation>& operations) {
  for (const Operation& operation : operations) {
    std::printf("  %s", textOf(operation).c_str());
  }
}

void fail(std::uint64_t seed, const std::vector<Operation>& operations, const Seen& seen) {
  const std::vector<Operation> few = shrunk(operations, seen);
  std::printf("seed %llu differs. As few operations as differ:\n",
              static_cast<unsigned long long>(seed));
  print(few);
  std::printf("As change lines for vpm replay, where there are such:\n");
  for (const Operation& operation : few) {
    if (const Text line = changeLineOf(operation); !line.empty()) {
      std::printf("%s\n", line.c_str());
    }
  }
  std::fflush(stdout);
  std::printf("%s\n", run(few, seen, 1).difference.c_str());
}

// How often each site was come by, by its text.
std::map<Text, long> named(const Hits& hits) {
  std::map<Text, long> all;
  for (const auto& [site, count] : hits) {
    const auto& [name, form, level, piece] = site;
    all[Text(name) + "::" + form + " " + (level == 0 ? "branch" : std::to_string(level)) + " \"" +
        piece + "\""] += count;
  }
  return all;
}

int checkSites(const Hits& hits, const char* path, long least) {
  const auto all = named(hits);
  std::ifstream known(path);
  if (!known) {
    std::ofstream made(path);
    for (const auto& [site, count] : all) {
      if (count < least) {
        std::printf("come by %ld times, and so not listed: %s\n", count, site.c_str());
      } else {
        made << site << "\n";
      }
    }
  }
  int status = 0;
  for (Text site; std::getline(known, site);) {
    const auto found = all.find(site);
    const long count = found == all.end() ? 0 : found->second;
    if (count < least) {
      std::printf("come by %ld times instead of %ld: %s\n", count, least, site.c_str());
      status = 1;
    }
  }
  return status;
}

// Runs one seed and adds it up; false when it differs.
bool runSeed(std::uint64_t seed, std::size_t count, std::size_t every, Outcome& sum) {
  static std::uint64_t current;
  current = seed;
  // Of what ends the process, too, the seed is wanted.
  const auto tell = [](int signal) {
    std::fprintf(stderr, "seed %llu ends the process; see reference shrink\n",
                 static_cast<unsigned long long>(current));
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  };
  std::signal(SIGABRT, tell);
  std::signal(SIGSEGV, tell);
  Seen seen;
  const auto operations = operationsOf(seed, count, seen);
  const Outcome outcome = run(operations, seen, every);
  if (!outcome.difference.empty()) {
    fail(seed, operations, seen);
    return false;
  }
  sum.operations += outcome.operations;
  sum.comparisons += outcome.comparisons;
  sum.endings += outcome.endings;
  for (const auto& [site, hits] : outcome.hits) {
    sum.hits[site] += hits;
  }
  return true;
}

int shrink(const Arguments& arguments) {
  Seen seen;
  const auto operations = operationsOf(arguments.number(2, 1), arguments.number(3, 1000), seen);
  fail(arguments.number(2, 1), operations, seen);
  return 0;
}

void printSum(const Outcome& sum) {
  std::printf(
      "%zu operations, %zu comparisons of whole worlds, %zu ends of the process, no difference\n",
      sum.operations, sum.comparisons, sum.endings);
}

int prove(const Arguments& arguments) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(arguments.number(2, 60));
  const std::uint64_t first = arguments.number(3, 1);
  std::uint64_t seed = first;
  Outcome sum;
  for (; Clock::now() < end; ++seed) {
    if (!runSeed(seed, 1000, 10, sum)) {
      return 1;
    }
  }
  std::printf("seeds %llu to %llu: ", static_cast<unsigned long long>(first),
              static_cast<unsigned long long>(seed - 1));
  printSum(sum);
  return 0;
}

int random(const Arguments& arguments) {
  const auto [from, to] = arguments.seeds(2);
  Outcome sum;
  for (std::uint64_t seed = from; seed <= to; ++seed) {
    if (!runSeed(seed, arguments.number(3, 1000), arguments.number(4, 10), sum)) {
      return 1;
    }
  }
  printSum(sum);
  return arguments.count > 6
             ? checkSites(sum.hits, arguments.words[5], static_cast<long>(arguments.number(6, 1)))
             : 0;
}

int scratch(const Arguments& arguments) {
  const auto [from, to] = arguments.seeds(2);
  ScratchOutcome sum;
  for (std::uint64_t seed = from; seed <= to; ++seed) {
    const auto operations = calmOperationsOf(seed, arguments.number(3, 300));
    const ScratchOutcome outcome = compareWithScratch(operations, arguments.number(4, 10));
    if (!outcome.difference.empty()) {
      std::printf("seed %llu, after operation %zu: %s\n", static_cast<unsigned long long>(seed),
                  outcome.operations, outcome.difference.c_str());
      print({operations.begin(),
             operations.begin() + static_cast<std::ptrdiff_t>(outcome.operations)});
      return 1;
    }
    sum.operations += outcome.operations;
    sum.comparisons += outcome.comparisons;
    for (const auto& [reason, count] : outcome.intended) {
      sum.intended[reason] += count;
    }
  }
  std::printf(
      "%zu operations, %zu comparisons with a fresh translation; differences, all intended:\n",
      sum.operations, sum.comparisons);
  for (const auto& [reason, count] : sum.intended) {
    std::printf("  %s: %zu\n", reason.c_str(), count);
  }
  return 0;
}

int worlds(const Arguments& arguments) {
  for (const bool policy : {true, false}) {
    const WorldsOutcome outcome = everyHistory(policy, arguments.number(2, 3),
                                               arguments.number(3, 0), arguments.number(4, 1));
    std::printf("%s: %zu histories, %zu operations\n", policy ? "policy" : "service device",
                outcome.histories, outcome.operations);
    if (!outcome.difference.empty()) {
      print(outcome.history);
      std::printf("%s\n", outcome.difference.c_str());
      return 1;
    }
  }
  return 0;
}

int lines(const Arguments& arguments) {
  ModelSide model(false);
  Text log;
  for (const Operation& operation :
       calmOperationsOf(arguments.number(2, 1), arguments.number(3, 300))) {
    const Text line = changeLineOf(operation);
    if (!line.empty() && model.fits(operation)) {
      std::printf("%s\n", line.c_str());
      model.apply(operation);
    }
  }
  if (arguments.count > 4) {
    std::ofstream(arguments.words[4]) << model.world.log;
  }
  return 0;
}

int starve(const Arguments& arguments) {
  const auto [from, to] = arguments.seeds(2);
  StarveOutcome sum;
  for (std::uint64_t seed = from; seed <= to; ++seed) {
    const bool calm = seed % 2 == 1;
    Seen seen;
    const std::size_t count = arguments.number(3, 100);
    const auto operations = calm ? calmOperationsOf(seed, count) : operationsOf(seed, count, seen);
    const StarveOutcome outcome = starve(operations, calm);
    if (!outcome.difference.empty()) {
      std::printf("seed %llu, operation %zu, %s\n", static_cast<unsigned long long>(seed),
                  outcome.operations, outcome.difference.c_str());
      print({operations.begin(),
             operations.begin() + static_cast<std::ptrdiff_t>(outcome.operations)});
      return 1;
    }
    sum.operations += outcome.operations;
    sum.failures += outcome.failures;
    sum.endings += outcome.endings;
  }
  std::printf(
      "%zu operations, %zu failed allocations, %zu ends of the process for want of memory\n",
      sum.operations, sum.failures, sum.endings);
  return 0;
}

int soak(const Arguments& arguments) {
  const SoakOutcome outcome = Reference::soak(
      std::max<std::size_t>(arguments.number(2, 1000000) / 100, 1) * 100, arguments.number(3, 1));
  const auto grown = [](double before, double after) { return (after / before - 1) * 100; };
  const double resident = grown(static_cast<double>(outcome.residentBefore),
                                static_cast<double>(outcome.residentAfter));
  const double cost = grown(outcome.costOfFresh, outcome.costOfOld);
  std::printf(
      "resident memory: %zu kB after a tenth, %zu kB at the end (%+.2f %%)\n"
      "99 of 100 changes: below %.0f ns in a fresh world, %.0f ns in this one (%+.1f %%)\n",
      outcome.residentBefore, outcome.residentAfter, resident, outcome.costOfFresh,
      outcome.costOfOld, cost);
  return resident > 1 || cost > 5 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  const Arguments arguments{argc, argv};
  const std::string_view what = argc > 2 ? argv[1] : "";
  if (what == "random") {
    return random(arguments);
  }
  if (what == "shrink") {
    return shrink(arguments);
  }
  if (what == "prove") {
    return prove(arguments);
  }
  if (what == "scratch") {
    return scratch(arguments);
  }
  if (what == "lines") {
    return lines(arguments);
  }
  if (what == "soak") {
    return soak(arguments);
  }
  if (what == "starve") {
    return starve(arguments);
  }
  if (what == "worlds") {
    return worlds(arguments);
  }
  std::fputs(kUsage, stderr);
  return 2;
}
