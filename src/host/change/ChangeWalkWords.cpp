#include <charconv>
#include <cmath>
#include <utility>

#include "change/ChangeWalk.h"
#include "change/ChangeWords.h"

namespace Host {
void ChangeWalk::time(Value value) {
  constexpr Kel::Seconds kMost = 1e12;
  if (!is(JsonKind::number, value)) {
    return;
  }
  const std::string_view raw = tokens_.scalarOf(value).raw;
  Kel::Seconds seconds = 0;
  const auto [end, error] = std::from_chars(raw.data(), raw.data() + raw.size(), seconds);
  if (error != std::errc() || end != raw.data() + raw.size() || std::abs(seconds) >= kMost) {
    return fault(raw, concat({raw.substr(0, 40),
                              " is no time; expected seconds with at most 12 "
                              "digits before the point"}));
  }
  change_->time = seconds;
}

void ChangeWalk::control(Value value) {
  if (is(JsonKind::text, value)) {
    const std::string_view name = text(value);
    const std::size_t index = positionOf(name, kVerbs);
    if (index == kVerbs.size()) {
      return fault(value.raw_json_token(), whyUnknown(name, kVerbs));
    }
    change_->control = static_cast<Verb>(index);
  }
}

void ChangeWalk::tree(Value value) {
  if (is(JsonKind::text, value)) {
    const std::string_view name = text(value);
    if (positionOf(name, kTrees) == kTrees.size()) {
      return fault(value.raw_json_token(), whyUnknown(name, kTrees));
    }
    change_->policies = name == kTrees[0];
    change_->serviceDevices = name == kTrees[1];
  }
}

void ChangeWalk::signal(Value value) {
  if (is(JsonKind::boolean, value)) {
    change_->signal = tokens_.scalarOf(value).raw == "true";
  }
}

void ChangeWalk::show(Value value) {
  std::array<bool*, kShows.size()> asked{&change_->show.v2, &change_->show.status,
                                         &change_->show.audit, &change_->show.stats};
  each(value, [&](Value element) {
    if (!is(JsonKind::text, element)) {
      return;
    }
    const std::string_view name = text(element);
    const std::size_t index = positionOf(name, kShows);
    if (index == kShows.size()) {
      fault(element.raw_json_token(), whyUnknown(name, kShows));
    } else if (std::exchange(*asked[index], true)) {
      fault(element.raw_json_token(), concat({"\"", name, "\" stands here twice"}));
    }
  });
}

}  // namespace Host
