#pragma once

#include <simdjson.h>

#include <functional>
#include <string_view>
#include <vector>

#include "change/Change.h"
#include "change/PathReader.h"
#include "data/JsonTokens.h"
#include "text/SyntaxCheck.h"

namespace Host {

/// One walk over one change line after the other: the inside of ChangeReader.
class ChangeWalk {
 public:
  std::vector<Fault> read(std::string_view line, Change& change);

 private:
  using Value = simdjson::ondemand::value;
  using Object = simdjson::ondemand::object;
  using Each = std::function<void(Value)>;

  void line(simdjson::ondemand::document& document);
  void member(std::size_t index, Value value);
  void time(Value value);
  void paths(Value value, std::vector<TreePath>& paths, bool deletes);
  void edits(Value value, std::vector<Edit>& edits);
  void edit(Value value, std::vector<Edit>& edits);
  bool editPath(Object object, std::string_view where, TreePath& path);
  void editValue(Edit& edit, Value value);
  void control(Value value);
  void tree(Value value);
  void signal(Value value);
  void show(Value value);

  void each(Value value, const Each& element);
  bool path(Value value, TreePath& path);
  bool is(JsonKind wanted, Value& value);
  std::string_view text(Value& value);
  bool isFirst(std::string_view name, std::size_t index, std::uint64_t& seen);
  void fault(std::string_view where, std::string message, const TreePath& path = {});

  simdjson::ondemand::parser parser_;
  PathReader paths_;
  std::string unescaped_;
  // Of the line that is being read:
  std::string_view text_;
  JsonTokens tokens_{{}};
  Change* change_ = nullptr;
  std::vector<Fault> faults_;
};

}  // namespace Host
