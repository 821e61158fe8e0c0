#pragma once

#include <simdjson.h>

#include <functional>
#include <string_view>
#include <vector>

#include "change/PathReader.h"
#include "data/JsonTokens.h"
#include "text/SyntaxCheck.h"

namespace Host {

/// A walk over one line after the other, each of them a JSON object: what change lines and requests
/// have in common. Where the parser stumbles, simdjson::simdjson_error comes out of all but `walk`.
class LineWalk {
 protected:
  using Value = simdjson::ondemand::value;
  using Object = simdjson::ondemand::object;
  using Each = std::function<void(Value)>;

  /// `content`: what paths in the line may lead to.
  explicit LineWalk(Content content) : paths_(content) {}
  LineWalk(const LineWalk&) = delete;
  LineWalk& operator=(const LineWalk&) = delete;
  ~LineWalk() = default;

  /// Walks over `line`, behind which lie SourceText::kPadding bytes, and hands its object to
  /// `members`. The faults are sorted by their place. `what` it is that should be an object: "a
  /// change line is an object, such as {...}".
  std::vector<Fault> walk(std::string_view line, std::string_view what,
                          const std::function<void(Object)>& members);

  void each(Value value, const Each& element);
  bool path(Value value, TreePath& path);
  bool is(JsonKind wanted, Value& value);
  /// What a JSON text stands for; valid until the next call.
  std::string_view text(Value& value);
  bool isFirst(std::string_view name, std::size_t index, std::uint64_t& seen);
  void fault(std::string_view where, std::string message, const TreePath& path = {});

  // Of the line that is being read:
  std::string_view text_;
  JsonTokens tokens_{{}};
  std::vector<Fault> faults_;

 private:
  simdjson::ondemand::parser parser_;
  PathReader paths_;
  std::string unescaped_;
};

}  // namespace Host
