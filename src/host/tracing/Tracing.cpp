#include "tracing/Tracing.h"

#include <charconv>
#include <fstream>

#include "Pario/Listening.h"
#include "text/ByteSink.h"
#include "text/Concat.h"
#include "tracing/TraceScope.h"

namespace Host {
namespace {

/// The oldest lines are dropped by the segment: an eighth of the trace at once.
constexpr std::size_t kSegments = 8;
constexpr std::size_t kSmallest = kSegments * Lumo::Segments::kSmallest;
constexpr std::size_t kLargest = kSegments * Lumo::Segments::kLargest;

/// A core file of this process is to hold the trace too, for whoever gets the core alone. Of all
/// that the program maps, the ring alone is files that it also writes.
void dumpMappedFiles() {
  constexpr unsigned kSharedFiles = 1U << 3U;
  constexpr const char* kFilter = "/proc/self/coredump_filter";
  unsigned filter = 0;
  if (std::ifstream(kFilter) >> std::hex >> filter) {
    std::ofstream(kFilter) << "0x" << std::hex << (filter | kSharedFiles);
  }
  // Deliberate: without /proc there is no error; the trace is in its files as ever.
}

}  // namespace

Tracing::Tracing(const RunOptions& options)
    : facility_(Kel::TextTrace::facility("VelaPolicyMonitor")), levelsBefore_(facility_.levels()) {
  // The ring first: when it fails the text trace is as it was.
  if (!options.traceFile.empty()) {
    openRing(options);
  }
  if (!options.trace.empty()) {
    openText(options);
  }
  Pario::scopeIs(scopeOf(options.traceOnly));
}

void Tracing::openText(const RunOptions& options) {
  const std::string& file = options.trace;
  if (file != "-") {
    const std::ofstream emptied(file, std::ios::trunc);  // the sink itself only appends
  }
  std::string why;
  auto sink = Kel::TextTrace::fileSink(file, why);
  if (sink == nullptr) {
    throw OutputError(concat({file, ": the trace cannot be written: ", why}));
  }
  textName_ = file == "-" ? "standard error" : file;
  sinkBefore_ = Kel::TextTrace::sinkIs(std::move(sink));
  facility_.levelsAre(options.traceLevels);
}

void Tracing::openRing(const RunOptions& options) {
  constexpr std::size_t kStep = Lumo::Segments::kSmallest;
  const std::size_t segment = (options.traceSize / kSegments + kStep - 1) / kStep * kStep;
  std::string why;
  ring_ = Lumo::TraceFile::open(options.traceFile, segment, kSegments, why);
  if (ring_ == nullptr) {
    throw OutputError(concat({options.traceFile, ": the trace cannot be written: ", why}));
  }
  dumpMappedFiles();
  Pario::binaryLevelsAre(options.traceLevels);
  ringBefore_ = Lumo::defaultHandleIs(ring_.get());
}

Kel::TextTrace::Levels Tracing::levels() const {
  return ring_ != nullptr ? Pario::binaryLevels() : facility_.levels();
}

void Tracing::levelsAre(Kel::TextTrace::Levels levels) {
  if (ring_ != nullptr) {
    Pario::binaryLevelsAre(levels);
  }
  if (ring_ == nullptr || sinkBefore_ != nullptr) {
    facility_.levelsAre(levels);
  }
}

Tracing::~Tracing() { end(); }

void Tracing::end() {
  Pario::scopeIs({});
  facility_.levelsAre(levelsBefore_);
  if (sinkBefore_ != nullptr) {
    Kel::TextTrace::sinkIs(std::move(sinkBefore_));
  }
  if (ring_ != nullptr) {
    Lumo::defaultHandleIs(ringBefore_);
    Pario::binaryLevelsAre(Kel::TextTrace::kAllLevels);
    ring_.reset();
  }
}

std::string Tracing::whyNotWhole() const {
  const std::uint64_t lost = Kel::TextTrace::linesLost() - lostBefore_;
  return lost == 0 || textName_.empty()
             ? ""
             : concat({textName_, ": lines of the trace that could not be written: ",
                       std::to_string(lost), "; is the disk full?"});
}

void Tracing::check() const {
  if (const std::string why = whyNotWhole(); !why.empty()) {
    throw OutputError(why);
  }
}

bool parseTraceSize(const std::string& text, std::size_t& bytes, std::string& why) {
  constexpr std::string_view kUnits = "KMG";
  std::size_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  const std::size_t unit = rest + 1 == end ? kUnits.find(*rest) : std::string_view::npos;
  const std::size_t shift = unit == std::string_view::npos ? 0 : 10 * (unit + 1);
  if (error != std::errc() || (rest != end && shift == 0) || number > (kLargest >> shift) ||
      (number << shift) < kSmallest) {
    why = concat({"\"", text, "\" is no size of a trace; expected 32K to 8G, such as 64M"});
    return false;
  }
  bytes = number << shift;
  return true;
}

}  // namespace Host
