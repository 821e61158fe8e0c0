#include "change/ChangeWriter.h"

#include "change/ChangeWords.h"

namespace Host {
namespace {

/// Nothing is asked of such a list but to be there: an entry of a leaf-list named by its path.
bool isMember(const Datum& datum) {
  return datum.node->kind == Node::Kind::leafList && datum.key != nullptr;
}

}  // namespace

void ChangeWriter::line(const Change& change) { write(change, change.time, change.show); }

void ChangeWriter::lineApplied(const Change& change, Kel::Seconds time) { write(change, time, {}); }

void ChangeWriter::write(const Change& change, std::optional<Kel::Seconds> time,
                         const Change::Show& asked) {
  json_.openObject();
  if (time) {
    json_.name("time");
    json_.real(*time);
  }
  paths("delete", change.deletes);
  edits("replace", change.replaces);
  edits("update", change.updates);
  paths("notify", change.notifies);
  control(change);
  if (!change.signal) {
    json_.name("signal");
    json_.boolean(false);
  }
  show(asked);
  json_.closeObject();
  json_.endLine();
}

void ChangeWriter::paths(std::string_view name, const std::vector<TreePath>& paths) {
  if (paths.empty()) {
    return;
  }
  json_.name(name);
  json_.openArray();
  for (const TreePath& path : paths) {
    json_.text(pathOf(stepsOf(path)));
  }
  json_.closeArray();
}

void ChangeWriter::edits(std::string_view name, const std::vector<Edit>& edits) {
  if (edits.empty()) {
    return;
  }
  json_.name(name);
  json_.openArray();
  for (const Edit& edit : edits) {
    json_.openObject();
    json_.name("path");
    json_.text(pathOf(stepsOf(edit.path)));
    if (!isMember(edit.value)) {
      json_.name("value");
      datum(edit.value);
    }
    json_.closeObject();
  }
  json_.closeArray();
}

void ChangeWriter::control(const Change& change) {
  if (!change.control) {
    return;
  }
  json_.name("control");
  json_.text(kVerbs[static_cast<std::size_t>(*change.control)]);
  if (!change.policies || !change.serviceDevices) {
    json_.name("tree");
    json_.text(kTrees[change.policies ? 0 : 1]);
  }
}

void ChangeWriter::show(const Change::Show& asked) {
  if (!asked.any()) {
    return;
  }
  const std::array<bool, kShows.size()> each{asked.v2, asked.status, asked.audit, asked.stats};
  json_.name("show");
  json_.openScalars();
  for (std::size_t i = 0; i < kShows.size(); ++i) {
    if (each[i]) {
      json_.text(kShows[i]);
    }
  }
  json_.closeScalars();
}

/// The value that stands at a path or behind a name; of an entry, what is below its keys.
void ChangeWriter::datum(const Datum& datum) {
  const Node::Kind kind = datum.node->kind;
  if (kind == Node::Kind::leaf) {
    json_.value(*datum.node->type, datum.valuePlace());
  } else if (kind == Node::Kind::container || kind == Node::Kind::presence ||
             datum.key != nullptr) {
    json_.openObject();
    parts(datum);
    json_.closeObject();
  } else {
    list(datum);
  }
}

void ChangeWriter::parts(const Datum& datum) {
  if (datum.node->kind == Node::Kind::mapping) {
    return pair(datum);
  }
  for (const Datum& part : datum.parts) {
    json_.name(part.node->name);
    this->datum(part);
  }
}

void ChangeWriter::list(const Datum& list) {
  const bool scalars = list.node->kind == Node::Kind::leafList;
  scalars ? json_.openScalars() : json_.openArray();
  for (const Datum& entry : list.parts) {
    if (scalars) {
      json_.value(*list.node->type, entry.keyPlace());
      continue;
    }
    json_.openObject();
    keys(*list.node, entry.keyPlace());
    parts(entry);
    json_.closeObject();
  }
  scalars ? json_.closeScalars() : json_.closeArray();
}

void ChangeWriter::pair(const Datum& pair) {
  if (pair.value != nullptr) {
    const Node& leaf = *pair.node->children.back();
    json_.name(leaf.name);
    json_.value(*leaf.type, pair.valuePlace());
  }
}

void ChangeWriter::keys(const Node& list, const void* key) {
  for (std::size_t i = 0; i < list.keys; ++i) {
    const Node& leaf = *list.children[i];
    json_.name(leaf.name);
    // A record is its own key; its leaves lie in it.
    json_.value(*leaf.type, static_cast<const std::byte*>(key) + leaf.offset);
  }
}

}  // namespace Host
