#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "data/Receiver.h"

namespace Host {

/// Puts what is read straight into the trees: entries are created and then filled, and what is
/// there already is added to. For trees that nobody watches yet: what is wrong with a document
/// comes out when part of it is in.
class EntityFiller : public Receiver {
 public:
  explicit EntityFiller(const Trees& trees) : trees_(trees) {}

  void open(const Node& container) override;
  void openList(const Node& list) override;
  bool openEntry(const Node& list, const void* key) override;
  void close() override;
  void leaf(const Node& leaf, const void* value) override;
  bool member(const Node& list, const void* key) override;
  bool pair(const Node& mapping, const void* key, const void* value) override;

 private:
  struct Level {
    Kel::PtrInterface* object;  // kept alive by the tree
    // Of the list that is being read. One that began empty tells by its size whether an entry is
    // new; for one that an earlier document has filled, the keys of this one are noted.
    bool startedEmpty = true;
    std::unordered_set<std::string> had = {};
  };

  bool isNew(const Node& list, const void* key, std::size_t sizeBefore);
  std::size_t sizeOf(const Node& list) const { return list.row->size(*levels_.back().object); }

  const Trees& trees_;
  std::vector<Level> levels_;
  std::string text_;
};

}  // namespace Host
