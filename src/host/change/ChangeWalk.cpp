#include "change/ChangeWalk.h"

#include <algorithm>
#include <array>

#include "change/ChangeWords.h"
#include "change/Recorder.h"
#include "document/DocumentWalk.h"
#include "text/Concat.h"
#include "text/Report.h"

namespace Host {
namespace {

namespace ondemand = simdjson::ondemand;

// In the order in which they act.
constexpr std::array<std::string_view, 9> kMembers{
    "time", "delete", "replace", "update", "notify", "control", "tree", "signal", "show"};
constexpr std::array<std::string_view, 2> kEditMembers{"path", "value"};

}  // namespace

std::vector<Fault> ChangeWalk::read(std::string_view text, Change& change) {
  text_ = text;
  tokens_ = JsonTokens(text);
  change_ = &change;
  faults_.clear();
  std::string stumbled;
  try {
    ondemand::document document;
    const simdjson::padded_string_view padded(text.data(), text.size(),
                                              text.size() + SourceText::kPadding);
    if (const auto error = parser_.iterate(padded).get(document)) {
      throw simdjson::simdjson_error(error);
    }
    line(document);
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

void ChangeWalk::line(ondemand::document& document) {
  const JsonKind kind = JsonTokens::kindOf(take(document.type()));
  if (kind != JsonKind::object) {
    return fault(
        take(document.raw_json_token()),
        concat({"a change line is an object, such as {\"update\": [...]}; found ", nameOf(kind)}));
  }
  std::uint64_t seen = 0;
  std::string_view treeName;
  for (auto field : take(document.get_object())) {
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
  if (document.current_location().error() != simdjson::OUT_OF_BOUNDS) {
    JsonTokens::stumble();  // there is more behind the object
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
