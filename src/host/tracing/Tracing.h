#pragma once

#include <memory>
#include <string>

#include "Kel/TextTrace.h"
#include "Lumo/Lumo.h"
#include "text/RunOptions.h"

namespace Host {

/// The traces of the library as the options of a run ask for them, as long as this lives: the text
/// trace, the binary trace, both with the same lines, or none. Made in the thread of the event
/// loop.
class Tracing {
 public:
  /// The file of the text trace is replaced; a binary trace that lies in its folder is moved aside
  /// (Lumo::Segments). Raises OutputError when one cannot be written.
  explicit Tracing(const RunOptions& options);
  ~Tracing();
  Tracing(const Tracing&) = delete;
  Tracing& operator=(const Tracing&) = delete;

  /// Of the traces that were asked for; of the text trace, on standard error, if none was.
  Kel::TextTrace::Levels levels() const;
  void levelsAre(Kel::TextTrace::Levels levels);

  /// Nothing is traced any more.
  void end();
  /// What to say of lines that the text trace has lost, on a full disk for instance; empty when it
  /// has all.
  std::string whyNotWhole() const;
  /// Raises OutputError when the text trace has lost lines.
  void check() const;

 private:
  void openText(const RunOptions& options);
  void openRing(const RunOptions& options);

  Kel::TextTrace::Facility& facility_;
  const Kel::TextTrace::Levels levelsBefore_;
  std::shared_ptr<Kel::TextTrace::Sink> sinkBefore_;  // null: the text trace was left alone
  std::string textName_;
  const std::uint64_t lostBefore_ = Kel::TextTrace::linesLost();
  std::unique_ptr<Lumo::TraceFile> ring_;  // null: the binary trace was left alone
  Lumo::TraceFile* ringBefore_ = nullptr;
};

/// Reads "65536", "64K", "8M", "1G". False leaves `bytes` and says in `why` what was expected.
bool parseTraceSize(const std::string& text, std::size_t& bytes, std::string& why);

}  // namespace Host
