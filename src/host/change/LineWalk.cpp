#include "change/LineWalk.h"

#include <algorithm>

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

std::vector<Fault> LineWalk::walk(std::string_view text, std::string_view what,
                                  const std::function<void(Object)>& members) {
  text_ = text;
  tokens_ = JsonTokens(text);
  faults_.clear();
  std::string stumbled;
  try {
    simdjson::ondemand::document document;
    const simdjson::padded_string_view padded(text.data(), text.size(),
                                              text.size() + SourceText::kPadding);
    if (const auto error = parser_.iterate(padded).get(document)) {
      throw simdjson::simdjson_error(error);
    }
    const JsonKind kind = JsonTokens::kindOf(take(document.type()));
    if (kind != JsonKind::object) {
      fault(take(document.raw_json_token()), concat({what, "; found ", nameOf(kind)}));
    } else {
      members(take(document.get_object()));
      if (faults_.empty() && document.current_location().error() != simdjson::OUT_OF_BOUNDS) {
        JsonTokens::stumble();  // there is more behind the object
      }
    }
  } catch (const simdjson::simdjson_error& error) {
    stumbled = error.what();
  }
  if (faults_.empty() && stumbled.empty()) {
    return {};
  }
  if (auto syntax = findSyntaxFault(text, "line")) {
    std::erase_if(faults_, [&](const Fault& each) { return each.offset >= syntax->offset; });
    faults_.push_back(std::move(*syntax));
  } else if (!stumbled.empty()) {
    faults_.push_back({0, 0, concat({"the line cannot be read: ", stumbled}), {}});
  }
  std::ranges::stable_sort(faults_, {}, &Fault::offset);
  return std::move(faults_);
}

void LineWalk::each(Value value, const Each& element) {
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

bool LineWalk::path(Value value, TreePath& path) {
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

bool LineWalk::is(JsonKind wanted, Value& value) {
  const JsonKind found = tokens_.scalarOf(value).kind;
  if (found != wanted) {
    fault(value.raw_json_token(), concat({"expected ", nameOf(wanted), ", found ", nameOf(found)}));
  }
  return found == wanted;
}

std::string_view LineWalk::text(Value& value) {
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

bool LineWalk::isFirst(std::string_view name, std::size_t index, std::uint64_t& seen) {
  const std::uint64_t bit = std::uint64_t{1} << index;
  if ((seen & bit) != 0) {
    fault(quoted(name), concat({"this object has had \"", name, "\" already"}));
    return false;
  }
  seen |= bit;
  return true;
}

void LineWalk::fault(std::string_view where, std::string message, const TreePath& path) {
  const std::vector<Step> steps = stepsOf(path);
  faults_.push_back(
      {tokens_.offsetOf(where), underlined(where), std::move(message), pathOf(steps)});
}

}  // namespace Host
