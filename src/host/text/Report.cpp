#include "text/Report.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "Kel/TextTrace.h"
#include "text/Concat.h"

namespace Host {
namespace {

constexpr std::string_view kBold = "\033[1m";
constexpr std::string_view kRed = "\033[1;31m";
constexpr std::string_view kGreen = "\033[1;32m";
constexpr std::string_view kPlain = "\033[0m";
constexpr int kNumberWidth = 5;

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  Kel::TextTrace::appendEscaped(shown, text);
  return shown;
}

std::string inLine(std::string_view line, const Fault& fault) {
  return concat({"column ", std::to_string(SourceText::placeIn(line, fault.offset).column), ": ",
                 fault.message, fault.path.empty() ? "" : " at ", fault.path});
}

void Report::faults(const SourceText& source, const std::vector<Fault>& faults) {
  for (const Fault& each : faults) {
    if (room() == 0) {
      return;
    }
    fault(source, each);
  }
}

void Report::fault(const SourceText& source, const Fault& fault) {
  const SourceText::Place place = source.placeOf(fault.offset);
  const SourceText::Excerpt excerpt = source.excerpt(fault.offset, fault.length);
  headline(source.name() + ":" + std::to_string(place.line) + ":" + std::to_string(place.column),
           fault.message);
  if (!excerpt.text.empty()) {
    err_ << std::setw(kNumberWidth) << place.line << " | " << excerpt.text << '\n'
         << std::setw(kNumberWidth) << ""
         << " | " << std::string(excerpt.caret, ' ') << style(kGreen) << '^'
         << std::string(excerpt.underlined - 1, '~') << style(kPlain) << '\n';
  }
  if (!fault.path.empty()) {
    err_ << std::setw(kNumberWidth) << ""
         << "   at " << printable(fault.path) << '\n';
  }
}

void Report::problem(std::string_view subject, std::string_view message) {
  if (room() > 0) {
    headline(subject, message);
  }
}

void Report::headline(std::string_view place, std::string_view message) {
  ++errors_;
  err_ << style(kBold) << printable(place) << ": " << style(kRed) << "error: " << style(kPlain)
       << style(kBold) << printable(message) << style(kPlain) << '\n';
}

void Report::sum(std::string_view consequence) {
  err_ << "vpm: " << errors_ << (errors_ == 1 ? " error; " : " errors; ")
       << (room() == 0 ? "there may be more; " : "") << consequence << '\n';
}

}  // namespace Host
