#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "Measure.h"
#include "Pario/Pario.h"

#ifdef BENCH_SPDLOG
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>
#endif

// A record of a text of 12 characters and a number.

namespace Bench {
namespace {

constexpr std::string_view kText = "GigEthernet4";
constexpr Pario::Source kSource{"Bench", "void Bench::", "trace.cpp"};

/// The default ring for as long as this lives: memory without a name, as of a ring without files.
class Ring {
 public:
  Ring() : file_(Lumo::TraceFile::inMemory(std::size_t{1} << 20U, 4, why_)) {
    Lumo::defaultHandleIs(file_.get());
  }

 private:
  std::string why_;
  std::unique_ptr<Lumo::TraceFile> file_;
};

void record(std::string_view text, std::uint64_t number) {
  if (Pario::on(6)) {
    Pario::write({kSource, "record()", {6, 1}}, " interface ", text, " number ", number);
  }
}

void records(benchmark::State& state) {
  std::uint64_t number = 0;
  std::string_view text = kText;
  benchmark::DoNotOptimize(text);
  for (auto _ : state) {
    record(text, ++number);
  }
}

void withoutClock(benchmark::State& state) {
  const Ring ring;
  const Pario::Event event;
  records(state);
}
void withClock(benchmark::State& state) {
  const Ring ring;
  records(state);
}
void disabled(benchmark::State& state) { records(state); }

/// The least that leaves the same in memory: claim a slot and copy the values.
class HandWritten {
 public:
  void record(std::uint64_t stamp, std::string_view text, std::uint64_t number) {
    constexpr std::uint32_t kSite = 1;
    std::byte* at = at_;
    if (static_cast<std::size_t>(end_ - at) < 12 + 1 + text.size() + 8) {
      at = memory_.get();
    }
    std::memcpy(at, &kSite, 4);
    std::memcpy(at + 4, &stamp, 8);
    std::memcpy(at + 12, text.data(), text.size());
    at += 12 + text.size();
    *at = std::byte{0};
    std::memcpy(at + 1, &number, 8);
    at_ = at + 9;
    benchmark::ClobberMemory();
  }

 private:
  static constexpr std::size_t kSize = std::size_t{4} << 20U;
  std::unique_ptr<std::byte[]> memory_ = std::make_unique<std::byte[]>(kSize);
  std::byte* at_ = memory_.get();
  std::byte* end_ = memory_.get() + kSize;
};

template <class Clock>
void floor(benchmark::State& state, Clock clock) {
  HandWritten ring;
  std::uint64_t number = 0;
  std::string_view text = kText;
  benchmark::DoNotOptimize(text);
  for (auto _ : state) {
    ring.record(clock(), text, ++number);
  }
}
void floorWithoutClock(benchmark::State& state) {
  floor(state, [stamp = std::uint64_t{0}]() mutable { return ++stamp; });
}
void floorWithClock(benchmark::State& state) {
#if defined(__x86_64__)
  floor(state, [] { return __builtin_ia32_rdtsc(); });
#else
  floor(state, [] {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U +
           static_cast<std::uint64_t>(now.tv_nsec);
  });
#endif
}
void floorDisabled(benchmark::State& state) {
  bool on = false;
  benchmark::DoNotOptimize(on);
  HandWritten ring;
  std::uint64_t number = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(on);
    if (++number; on) {
      ring.record(0, kText, number);
    }
  }
}

BENCHMARK(withoutClock)->Name("trace record without a clock/ours");
BENCHMARK(floorWithoutClock)->Name("trace record without a clock/floor");
BENCHMARK(withClock)->Name("trace record with its own clock read/ours");
BENCHMARK(floorWithClock)->Name("trace record with its own clock read/floor");
BENCHMARK(disabled)->Name("trace record, disabled/ours");
BENCHMARK(floorDisabled)->Name("trace record, disabled/floor");

#ifdef BENCH_SPDLOG
void spdlogBacktrace(benchmark::State& state) {
  spdlog::logger logger("bench", std::make_shared<spdlog::sinks::null_sink_st>());
  logger.enable_backtrace(4096);
  std::uint64_t number = 0;
  for (auto _ : state) {
    logger.debug(" interface {} number {}", kText, ++number);
  }
}
BENCHMARK(spdlogBacktrace)->Name("trace record with its own clock read/spdlog");
#endif

}  // namespace
}  // namespace Bench
