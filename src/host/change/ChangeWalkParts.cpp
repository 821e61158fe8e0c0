#include "change/ChangeWalk.h"
#include "text/Concat.h"
#include "text/JsonText.h"
#include "text/Report.h"

namespace Host {
namespace {

/// Where in `raw`, the inside of a JSON text, stands what is at `offset` once escapes are resolved.
std::size_t rawOffset(std::string_view raw, std::size_t offset) {
  std::size_t at = 0;
  for (std::size_t plain = 0; plain < offset && at < raw.size();) {
    const std::size_t length = raw[at] == '\\' ? escapeLength(raw.substr(at)) : 1;
    std::string piece;
    appendUnescaped(piece, raw.substr(at, length));
    plain += piece.size();
    at += length;
  }
  return at;
}

}  // namespace

void ChangeWalk::each(Value value, const Each& element) {
  if (!is(JsonKind::array, value)) {
    return;
  }
  for (auto entry : take(value.get_array())) {
    element(take(std::move(entry)));
    if (faults_.size() >= Report::kMost) {
      return;
    }
  }
}

bool ChangeWalk::path(Value value, TreePath& path) {
  if (!is(JsonKind::text, value)) {
    return false;
  }
  const std::string_view raw = tokens_.scalarOf(value).raw;
  if (paths_.read(text(value), path)) {
    return true;
  }
  const std::size_t begin = rawOffset(raw, paths_.offset());
  const std::size_t end = rawOffset(raw, paths_.offset() + paths_.length());
  faults_.push_back({tokens_.offsetOf(raw) + begin, end - begin, paths_.why(), {}});
  return false;
}

bool ChangeWalk::is(JsonKind wanted, Value& value) {
  const JsonKind found = tokens_.scalarOf(value).kind;
  if (found != wanted) {
    fault(value.raw_json_token(), concat({"expected ", nameOf(wanted), ", found ", nameOf(found)}));
  }
  return found == wanted;
}

/// What a JSON text stands for; valid until the next call.
std::string_view ChangeWalk::text(Value& value) {
  const std::string_view raw = tokens_.scalarOf(value).raw;
  if (raw.find('\\') == std::string_view::npos) {
    return raw;
  }
  unescaped_.clear();
  if (!appendUnescaped(unescaped_, raw)) {
    JsonTokens::stumble();
  }
  return unescaped_;
}

bool ChangeWalk::isFirst(std::string_view name, std::size_t index, std::uint64_t& seen) {
  const std::uint64_t bit = std::uint64_t{1} << index;
  if ((seen & bit) != 0) {
    fault(quoted(name), concat({"this object has had \"", name, "\" already"}));
    return false;
  }
  seen |= bit;
  return true;
}

void ChangeWalk::fault(std::string_view where, std::string message, const TreePath& path) {
  const std::vector<Step> steps = stepsOf(path);
  faults_.push_back(
      {tokens_.offsetOf(where), underlined(where), std::move(message), pathOf(steps)});
}

}  // namespace Host
