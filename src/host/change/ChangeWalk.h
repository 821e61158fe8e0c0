#pragma once

#include "change/Change.h"
#include "change/LineWalk.h"

namespace Host {

/// One walk over one change line after the other: the inside of ChangeReader.
class ChangeWalk : private LineWalk {
 public:
  ChangeWalk() : LineWalk(Content::configuration) {}
  std::vector<Fault> read(std::string_view line, Change& change);

 private:
  void members(Object object);
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

  Change* change_ = nullptr;  // that is being read
};

}  // namespace Host
