#pragma once

#include <cstddef>
#include <iosfwd>
#include <string_view>
#include <vector>

#include "text/SourceText.h"
#include "text/SyntaxCheck.h"

namespace Host {

/// Says what is wrong, as compilers do:
///
///   site.json:12:27: error: priority 9999 is out of range; expected 10000 to 30000
///      12 |             "priority": 9999,
///         |                         ^~~~
///         at /vela-l3:policy-source/policy-set[device-name='fw1']/...
class Report {
 public:
  /// No more errors than these are said in one run, unless told otherwise.
  static constexpr std::size_t kMost = 20;

  Report(std::ostream& err, bool color, std::size_t most = kMost)
      : err_(err), color_(color), most_(most) {}

  void faults(const SourceText& source, const std::vector<Fault>& faults);
  /// Something is wrong that has no place in a document; `subject` is a file, or "vpm".
  void problem(std::string_view subject, std::string_view message);
  /// "vpm: 3 errors; " and `consequence`.
  void sum(std::string_view consequence);

  std::size_t errors() const noexcept { return errors_; }
  /// How many errors may still be said.
  std::size_t room() const noexcept { return most_ - errors_; }

 private:
  void fault(const SourceText& source, const Fault& fault);
  void headline(std::string_view place, std::string_view message);
  std::string_view style(std::string_view code) const { return color_ ? code : ""; }

  std::ostream& err_;
  bool color_;
  std::size_t most_;
  std::size_t errors_ = 0;
};

/// A fault in one line of text, as one line of text: what an answer says of it.
std::string inLine(std::string_view line, const Fault& fault);

/// `text` as one line that a terminal only shows: control characters are written as \xHH.
std::string printable(std::string_view text);

}  // namespace Host
