#include "tracing/TraceScope.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "VelaL3/VelaPriority.h"
#include "common/TracePlace.h"
#include "text/Concat.h"

namespace Host {
namespace {

using VelaPolicyMonitor::TracePlace;

struct Word {
  std::string_view name;  // with its equals sign
  std::string TraceSubject::*member;
};
constexpr std::array<Word, 4> kWords{{{"device=", &TraceSubject::device},
                                      {"vrf=", &TraceSubject::vrf},
                                      {"rule=", &TraceSubject::rule},
                                      {"handler=", &TraceSubject::handler}}};

const Word* wordAt(std::string_view text) {
  const auto at = std::ranges::find_if(
      kWords, [text](const Word& word) { return text.starts_with(word.name); });
  return at == kWords.end() ? nullptr : &*at;
}

std::uint32_t priorityOf(const std::string& rule) {
  std::uint32_t priority = 0;
  const char* const end = rule.data() + rule.size();
  return std::from_chars(rule.data(), end, priority).ptr == end ? priority : 0;
}

}  // namespace

bool parseTraceSubject(std::string_view text, TraceSubject& subject, std::string& why) {
  TraceSubject read = subject;
  std::string_view rest = text;
  while (true) {
    const Word* const word = wordAt(rest);
    if (word == nullptr) {
      why = concat({"\"", rest, "\" names nothing to trace; expected device=NAME, vrf=NAME, ",
                    "rule=PRIORITY or handler=NAME, with commas between"});
      return false;
    }
    rest.remove_prefix(word->name.size());
    std::size_t end = rest.find(',');
    while (end != std::string_view::npos && wordAt(rest.substr(end + 1)) == nullptr) {
      end = rest.find(',', end + 1);
    }
    read.*word->member = rest.substr(0, end);
    if (end == std::string_view::npos) {
      break;
    }
    rest.remove_prefix(end + 1);
  }
  why = whyNoRule(read.rule);
  if (why.empty()) {
    subject = read;
  }
  return why.empty();
}

std::string whyNoRule(const std::string& rule) {
  const std::uint32_t priority = priorityOf(rule);
  const bool good = rule.empty() || (priority >= VelaL3::VelaPriority::min &&
                                     priority <= VelaL3::VelaPriority::max);
  return good ? ""
              : concat({"\"", rule, "\" is no priority of a rule; expected ",
                        std::to_string(VelaL3::VelaPriority::min), " to ",
                        std::to_string(VelaL3::VelaPriority::max)});
}

Pario::Scope scopeOf(const TraceSubject& subject) {
  Pario::Scope scope;
  scope.handler = subject.handler;
  const auto narrow = [&scope](bool wanted, Pario::Place mask, Pario::Place bits) {
    if (wanted) {
      scope.mask |= mask;
      scope.value |= bits;
    }
  };
  narrow(!subject.device.empty(), TracePlace::kDeviceMask,
         VelaPolicyMonitor::OnDevice{subject.device}.bits());
  narrow(!subject.vrf.empty(), TracePlace::kVrfMask, VelaPolicyMonitor::OnVrf{subject.vrf}.bits());
  narrow(!subject.rule.empty(), TracePlace::kRuleMask,
         VelaPolicyMonitor::OnRule{priorityOf(subject.rule)}.bits());
  return scope;
}

}  // namespace Host
