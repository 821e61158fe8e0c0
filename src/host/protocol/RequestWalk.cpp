#include "protocol/RequestWalk.h"

#include <array>
#include <charconv>

#include "change/ChangeWords.h"
#include "text/Concat.h"
#include "text/SourceText.h"

namespace Host {
namespace {

// Each in the order of Request::Kind.
constexpr std::array<std::string_view, 10> kKinds{"show",  "audit", "explain", "try",    "watch",
                                                  "trace", "stats", "wait",    "reload", "stop"};
const std::array<std::vector<std::string_view>, kKinds.size()> kMembersOf{{
    {"of", "path"},
    {},
    {"path"},
    {"change"},
    {"path"},
    {"levels", "device", "vrf", "rule", "handler"},
    {},
    {"device", "timeout"},
    {},
    {},
}};
constexpr std::array<std::string_view, 9> kMembers{"of",     "path", "change", "timeout", "device",
                                                   "levels", "vrf",  "rule",   "handler"};
constexpr std::array<std::string_view, 3> kContainers{"v1", "v2", "status"};
constexpr std::string_view kRequest = "request";

}  // namespace

bool RequestWalk::isRequest(std::string_view line) {
  if (line.find("\"request\"") == std::string_view::npos) {
    return false;
  }
  simdjson::ondemand::document document;
  const simdjson::padded_string_view padded(line.data(), line.size(),
                                            line.size() + SourceText::kPadding);
  simdjson::ondemand::object object;
  return look_.iterate(padded).get(document) == simdjson::SUCCESS &&
         document.get_object().get(object) == simdjson::SUCCESS &&
         object.find_field_unordered(kRequest).error() == simdjson::SUCCESS;
}

std::vector<Fault> RequestWalk::read(std::string_view line, Request& request) {
  request_ = &request;
  return walk(line, "a request is an object, such as {\"request\": \"show\"}",
              [this](Object object) { members(object); });
}

void RequestWalk::members(Object object) {
  if (!kind(object)) {
    return;
  }
  take(object.reset());
  const auto& allowed = kMembersOf[static_cast<std::size_t>(request_->kind)];
  std::uint64_t seen = 0;
  for (auto field : object) {
    const std::string_view name = tokens_.nameOf(field);
    const std::size_t index = name == kRequest ? kMembers.size() : positionOf(name, kMembers);
    if (name != kRequest && positionOf(name, allowed) == allowed.size()) {
      fault(quoted(name), allowed.empty() ? concat({"\"", name.substr(0, 80),
                                                    "\" is unknown here; this request has no "
                                                    "other members"})
                                          : whyUnknown(name, allowed));
    } else if (isFirst(name, index, seen) && name != kRequest) {
      member(index, take(field.value()));
    }
  }
  const bool hasPath = request_->path || !faults_.empty();
  if (request_->kind == Request::Kind::explain && !hasPath) {
    fault(text_.substr(0, 1), "the member \"path\" is missing: what is to be explained");
  }
  if (request_->kind == Request::Kind::tryOut &&
      (seen >> positionOf("change", kMembers) & 1U) == 0) {
    fault(text_.substr(0, 1), "the member \"change\" is missing: the change line to try");
  }
  const bool of = request_->v1 || request_->v2 || request_->status;
  if (of && request_->path) {
    fault(text_.substr(0, 1), "\"path\" says what to show; \"of\" has no use beside it");
  }
  request_->v2 = of ? request_->v2 : true;
}

/// Reads the member "request", wherever it stands.
bool RequestWalk::kind(Object object) {
  Value value = take(object.find_field_unordered(kRequest));
  if (!is(JsonKind::text, value)) {
    return false;
  }
  const std::string_view name = text(value);
  const std::size_t index = positionOf(name, kKinds);
  if (index == kKinds.size()) {
    fault(value.raw_json_token(), whyUnknown(name, kKinds));
    return false;
  }
  request_->kind = static_cast<Request::Kind>(index);
  return true;
}

void RequestWalk::member(std::size_t index, Value value) {
  switch (index) {
    case 0:
      return containers(value);
    case 1: {
      TreePath read;
      if (path(value, read)) {
        request_->path = std::move(read);
      }
      return;
    }
    case 2:
      return change(value);
    case 3:
      return timeout(value);
    case 4:
      return keep(value, request_->device);
    case 5:
      return keep(value, request_->levels);
    case 6:
      return keep(value, request_->vrf);
    case 7:
      return keep(value, request_->rule);
    default:
      return keep(value, request_->handler);
  }
}

void RequestWalk::containers(Value value) {
  const std::array<bool*, kContainers.size()> asked{&request_->v1, &request_->v2,
                                                    &request_->status};
  each(value, [&](Value element) {
    if (is(JsonKind::text, element)) {
      const std::string_view name = text(element);
      const std::size_t index = positionOf(name, kContainers);
      if (index == kContainers.size()) {
        fault(element.raw_json_token(), whyUnknown(name, kContainers));
      } else {
        *asked[index] = true;
      }
    }
  });
}

void RequestWalk::timeout(Value value) {
  constexpr Kel::Seconds kMost = 1e9;
  if (!is(JsonKind::number, value)) {
    return;
  }
  const std::string_view raw = tokens_.scalarOf(value).raw;
  Kel::Seconds seconds = 0;
  const auto [end, error] = std::from_chars(raw.data(), raw.data() + raw.size(), seconds);
  if (error != std::errc() || seconds < 0 || seconds > kMost) {
    return fault(raw, concat({raw.substr(0, 40),
                              " is no time to wait; expected seconds from 0 to "
                              "1000000000"}));
  }
  request_->timeout = seconds;
}

void RequestWalk::change(Value value) {
  if (!is(JsonKind::object, value)) {
    return;
  }
  const std::string_view line = take(take(value.get_object()).raw_json());
  request_->change.emplace();
  for (Fault& each : changes_.read(line, *request_->change)) {
    each.offset += tokens_.offsetOf(line);
    faults_.push_back(std::move(each));
  }
}

void RequestWalk::keep(Value value, std::optional<std::string>& place) {
  if (is(JsonKind::text, value)) {
    place = text(value);
  }
}

}  // namespace Host
