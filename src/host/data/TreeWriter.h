#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "Kel/PtrInterface.h"
#include "data/Content.h"
#include "data/TreePath.h"
#include "text/JsonWriter.h"

namespace Host {

/// Writes parts of the data tree as RFC 7951 JSON, the same bytes for the same state.
///
/// Members stand in the order of the schema: keys first, then by attribute. Entries are sorted:
/// text by bytes, numbers by value, addresses and prefixes by family, value and length, names of
/// enumerators by ordinal, records field by field. What was never set and lists without entries are
/// left out; every other scalar is written, also one that nobody has written.
class TreeWriter {
 public:
  /// Of what is configured, `content` may leave out what the library has written.
  explicit TreeWriter(JsonWriter& json, Content content = Content::everything)
      : json_(json), withState_(content != Content::configuration) {}

  /// The member "module:name": { ... } for a container at the top.
  void container(const Node& top, const Trees& trees);
  /// Likewise, narrowed to what is at `path`: with the lists and keys that lead to it, and nothing
  /// else. Nothing at all when there is nothing.
  void at(const TreePath& path, const Trees& trees);

 private:
  void narrowed(const Node& node, const Kel::PtrInterface& object, std::span<const OwnedStep> path);
  void narrowedEntry(const OwnedStep& step, const Kel::PtrInterface& object,
                     std::span<const OwnedStep> below);
  void record(const Node& list, const void* record);
  void pair(const Node& mapping, const void* key, const void* value);
  void members(const Node& node, const Kel::PtrInterface& object);
  void member(const Node& child, const Kel::PtrInterface& object);
  void entries(const Node& list, const Kel::PtrInterface& object);
  void keys(const Node& list, const Kel::PtrInterface& object);
  void mapping(const Node& mapping, const Kel::PtrInterface& object);

  JsonWriter& json_;
  const bool withState_;
};

}  // namespace Host
