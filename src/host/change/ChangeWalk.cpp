#include "change/ChangeWalk.h"

#include <array>

#include "change/ChangeWords.h"
#include "change/Recorder.h"
#include "document/DocumentWalk.h"
#include "text/Concat.h"
#include "text/Report.h"

namespace Host {
namespace {

// In the order in which they act.
constexpr std::array<std::string_view, 9> kMembers{
    "time", "delete", "replace", "update", "notify", "control", "tree", "signal", "show"};
constexpr std::array<std::string_view, 2> kEditMembers{"path", "value"};

}  // namespace

std::vector<Fault> ChangeWalk::read(std::string_view line, Change& change) {
  change_ = &change;
  return walk(line, "a change line is an object, such as {\"update\": [...]}",
              [this](Object object) { members(std::move(object)); });
}

void ChangeWalk::members(Object object) {
  std::uint64_t seen = 0;
  std::string_view treeName;
  for (auto field : object) {
    const std::string_view name = tokens_.nameOf(field);
    const std::size_t index = positionOf(name, kMembers);
    if (index == kMembers.size()) {
      fault(quoted(name), whyUnknown(name, kMembers));
    } else if (isFirst(name, index, seen)) {
      treeName = kMembers[index] == "tree" ? name : treeName;
      member(index, take(field.value()));
    }
    if (faults_.size() >= Report::kMost) {
      return;
    }
  }
  if (!treeName.empty() && (seen >> positionOf("control", kMembers) & 1U) == 0) {
    fault(quoted(treeName), "\"tree\" says which tree \"control\" is for; here is no \"control\"");
  }
}

void ChangeWalk::member(std::size_t index, Value value) {
  switch (index) {
    case 0:
      return time(value);
    case 1:
      return paths(value, change_->deletes, true);
    case 2:
      return edits(value, change_->replaces);
    case 3:
      return edits(value, change_->updates);
    case 4:
      return paths(value, change_->notifies, false);
    case 5:
      return control(value);
    case 6:
      return tree(value);
    case 7:
      return signal(value);
    default:
      return show(value);
  }
}

void ChangeWalk::paths(Value value, std::vector<TreePath>& paths, bool deletes) {
  each(value, [&](Value element) {
    TreePath read;
    if (!path(element, read)) {
      return;
    }
    const Node& node = *read.back().node;
    if (node.isKey()) {
      fault(element.raw_json_token(),
            concat({node.name, deletes ? " is a key and goes with its entry; delete the entry"
                                       : " is a key and never changes; name the entry"}));
    } else if (!deletes && node.parent == nullptr) {
      fault(element.raw_json_token(), "this is all of a tree; name an attribute or an entry in it");
    } else {
      paths.push_back(std::move(read));
    }
  });
}

void ChangeWalk::edits(Value value, std::vector<Edit>& edits) {
  each(value, [&](Value element) { edit(element, edits); });
}

void ChangeWalk::edit(Value value, std::vector<Edit>& edits) {
  if (!is(JsonKind::object, value)) {
    return;
  }
  const std::string_view where = value.raw_json_token();
  Object object = take(value.get_object());
  Edit made;
  const bool named = editPath(object, where, made.path);
  take(object.reset());
  std::uint64_t seen = 0;
  bool given = false;
  for (auto field : object) {
    const std::string_view name = tokens_.nameOf(field);
    const std::size_t index = positionOf(name, kEditMembers);
    if (index == kEditMembers.size()) {
      fault(quoted(name), whyUnknown(name, kEditMembers));
    } else if (isFirst(name, index, seen) && kEditMembers[index] == "value") {
      given = true;
      if (named) {
        editValue(made, take(field.value()));
      }
    }
  }
  if (!named) {
    return;
  }
  const OwnedStep& last = made.path.back();
  if (!given && (last.node->kind != Node::Kind::leafList || last.key == nullptr)) {
    return fault(where,
                 concat({"the member \"value\" is missing; only an entry of a leaf-list, "
                         "such as dst-ip[.='10.0.0.0/8'], needs none"}),
                 made.path);
  }
  if (!given) {
    made.value = {last.node, last.key};
  }
  edits.push_back(std::move(made));
}

bool ChangeWalk::editPath(Object object, std::string_view where, TreePath& read) {
  for (auto field : object) {
    if (tokens_.nameOf(field) == "path") {
      Value value = take(field.value());
      if (!path(value, read)) {
        return false;
      }
      const Node& node = *read.back().node;
      if (node.isKey()) {
        fault(value.raw_json_token(),
              concat({node.name, " is a key and never changes; name the entry"}));
      }
      return !node.isKey();
    }
  }
  fault(where, "the member \"path\" is missing");
  return false;
}

void ChangeWalk::editValue(Edit& edit, Value value) {
  const OwnedStep last = edit.path.back();
  edit.value = {last.node, last.key};
  Recorder recorder(edit.value);
  DocumentWalk walk(text_, recorder, Report::kMost);
  const auto takeFaults = [&] { std::ranges::move(walk.faults(), std::back_inserter(faults_)); };
  try {
    walk.at(stepsOf(edit.path), value);
  } catch (const simdjson::simdjson_error&) {
    takeFaults();
    throw;
  }
  takeFaults();
  if (last.node->parent != nullptr && last.node->parent->kind == Node::Kind::mapping) {
    // The value of a pair is written with its key.
    edit.path.pop_back();
    edit.value.node = edit.path.back().node;
    edit.value.key = edit.path.back().key;
  }
}

}  // namespace Host
