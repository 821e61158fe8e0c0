#pragma once

// Comes before every source of the mutated copy: which of its mutants is the one that lives.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

// What the mutants look like is nobody's fault.
#pragma GCC diagnostic ignored "-Wparentheses"
#pragma GCC diagnostic ignored "-Wnarrowing"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wextra"
#pragma GCC diagnostic ignored "-Wreturn-type"
#pragma GCC diagnostic ignored "-Wunused"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wint-in-bool-context"
#pragma GCC diagnostic ignored "-Wbool-operation"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

namespace Mutation {

struct Run {
  /// Zero is none.
  unsigned mutant = 0;
  /// A file that the processes of a run share: one byte for each mutant whose place was come by.
  unsigned char* reached = nullptr;
};

inline Run runOfEnvironment() noexcept {
  Run run;
  if (const char* const number = std::getenv("MUTANT")) {
    run.mutant = static_cast<unsigned>(std::atoi(number));
  }
  if (const char* const path = std::getenv("MUTANTS_REACHED")) {
    const int file = open(path, O_RDWR | O_CLOEXEC);
    const auto size = static_cast<std::size_t>(lseek(file, 0, SEEK_END));
    void* const bytes = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (bytes == MAP_FAILED) {
      std::abort();
    }
    run.reached = static_cast<unsigned char*>(bytes);
    close(file);
  }
  return run;
}

/// Whether it is this mutant's turn.
inline bool is(unsigned mutant) noexcept {
  static const Run run = runOfEnvironment();
  if (run.reached != nullptr) {
    run.reached[mutant] = 1;
  }
  return run.mutant == mutant;
}

}  // namespace Mutation
