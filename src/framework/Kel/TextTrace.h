#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Kel/Text.h"

/// The text trace: lines of text for a person who reproduces a fault.
///
/// A *facility* is a named source of lines, such as "VelaPolicyMonitor". Each has its own set of
/// *levels*, 0 to 9, kept as a bit mask (bit L is level L): levels are not a threshold, 6 and 8 may
/// be on while 7 is off. A facility starts with no level, unless the environment names it:
///
///   VELA_TRACE=VelaPolicyMonitor/6-8,Other/0-9
///
/// The variable is read once, when the library is loaded. Text that cannot be understood is
/// reported on standard error and otherwise ignored; a trace must not keep an agent from starting.
///
/// All lines of the process go to one *sink*: a file, standard error (the first one) or a function.
/// A line is
///
///   1700000000.123456 VelaPolicyMonitor 8 VelaPolicyTranslate.cpp:41 handleVrf: message
///
/// and a line break: the time in seconds with six digits, facility, level, base name and line of
/// the source, short name of the handler, message. A control byte (below 0x20, and 0x7f) of a value
/// is written as `\xHH`, so that a name with a line break cannot pretend to be another line. Other
/// bytes, UTF-8 among them, pass unchanged.
///
/// **Nothing is buffered.** A line is handed to the operating system when it is written, with one
/// call, so that the last line before an abort, a crash or a kill is in the file. That costs about
/// a microsecond per line, which is the price of an instrument that is only switched on to look at
/// something; the trace that is always on is the binary one.
///
/// **A failing sink does not disturb the program.** A full disk, a closed pipe (also its signal), a
/// function that throws: the line is lost and counted in `linesLost`, nothing else happens, and the
/// next line is tried anew. A line written from inside a sink (a function that changes what is
/// being traced) is lost likewise, as it would call itself without end.
///
/// **Threads.** Facilities are found and created, levels are set and lines are written from any
/// thread; lines are written one at a time, in the order in which their writers got the lock.
///
/// **End of the process.** Facilities, their list and the sink are never destroyed: destructors
/// that run after main returns still write their lines.
namespace [[using gnu: visibility("default")]] Kel {
namespace TextTrace {

/// A set of levels: bit L is level L. Only bits 0 to 9 are ever set.
using Levels = std::uint32_t;
inline constexpr Levels kAllLevels = 0x3ff;  ///< 0 to 9

/// Reads "6-8", "0-9", "6,8", "7", "" and "none". False leaves `levels` and says in `why` what was
/// expected.
bool parseLevels(std::string_view text, Levels& levels, std::string& why);

/// The shortest text that parseLevels reads as `levels`: "6-8", "0-3,9", "none".
std::string textOfLevels(Levels levels);

/// One line on its way to a sink. All views end with the call.
struct Line {
  Seconds time;               ///< by Kel::System
  std::string_view facility;  ///< its name
  unsigned level;             ///< 0 to 9
  std::string_view file;      ///< base name of the source file
  std::uint32_t line;         ///< in the source file
  std::string_view handler;   ///< short name: handlePolicySet
  std::string_view message;   ///< control bytes of values already escaped
};

/// Appends the printed form of `line`, with its line break.
void appendLine(std::string& out, const Line& line);

/// Appends `text` with every control byte (below 0x20, and 0x7f) written as `\xHH`.
void appendEscaped(std::string& out, std::string_view text);

/// Escapes the control bytes of out[from…] in place.
void escapeFrom(std::string& out, std::size_t from);

/// A named source of lines. Lives as long as the process.
class Facility {
 public:
  /// Listens to no level. Facilities are made by facility().
  explicit Facility(std::string name) : name_(std::move(name)) {}
  Facility(const Facility&) = delete;
  Facility& operator=(const Facility&) = delete;

  const std::string& name() const noexcept { return name_; }  ///< as in every line
  /// To which it listens now.
  Levels levels() const noexcept { return levels_.load(std::memory_order_relaxed); }
  /// Whether it listens to a level.
  bool listens(unsigned level) const noexcept { return ((levels() >> level) & 1U) != 0; }
  void levelsAre(Levels levels);  ///< from the next line on

 private:
  const std::string name_;
  std::atomic<Levels> levels_{0};
};

/// The facility of this name; created by the first call.
Facility& facility(std::string_view name);

/// Reads the form of the environment variable and sets the levels of every facility in it. False
/// sets none and says in `why` what is wrong.
bool levelsAre(std::string_view text, std::string& why);

/// The levels to which at least one facility listens.
Levels levelsOfAny() noexcept;

/// `changed` is called after every change of the levels of any facility; null for nobody. Returns
/// the previous one. There is one place for it, for the trace front end, which keeps a copy of the
/// levels for its first test.
using LevelObserver = void (*)();
/// Sets who is called; returns who was.
LevelObserver levelObserverIs(LevelObserver changed) noexcept;

/// Takes lines. `write` is called for one line at a time.
class Sink {
 public:
  Sink() = default;
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;
  virtual ~Sink();
  /// False when the line was lost. May throw: the line is lost as well.
  virtual bool write(const Line& line) = 0;
};

/// Appends to the file `path`, which is created when missing; "-" is standard error. Null when it
/// cannot be opened: `why` says the reason.
std::shared_ptr<Sink> fileSink(const std::string& path, std::string& why);
std::shared_ptr<Sink> standardErrorSink();  ///< Writes to standard error.
/// Hands each line to `function`.
std::shared_ptr<Sink> callbackSink(std::function<void(const Line&)> function);

/// Replaces the sink; null is standard error. Returns the previous one. Not from inside a sink.
std::shared_ptr<Sink> sinkIs(std::shared_ptr<Sink> sink);

/// Hands a line to the sink, whatever the facility's levels are. Never fails.
void write(const Line& line) noexcept;

/// How many lines were lost since the start of the process.
std::uint64_t linesLost() noexcept;

}  // namespace TextTrace
}  // namespace Kel
