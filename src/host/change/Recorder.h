#pragma once

#include <set>
#include <vector>

#include "data/Datum.h"
#include "data/Receiver.h"

namespace Host {

/// Keeps what is read, so that it can be applied once all of it is known to be good.
class Recorder : public Receiver {
 public:
  /// What is read becomes `root`, which has its node and, where an entry is meant, its key.
  explicit Recorder(Datum& root);

  void open(const Node& container) override;
  void openList(const Node& list) override;
  bool openEntry(const Node& list, const void* key) override;
  void close() override { levels_.pop_back(); }
  void leaf(const Node& leaf, const void* value) override;
  bool member(const Node& list, const void* key) override;
  bool pair(const Node& mapping, const void* key, const void* value) override;

 private:
  struct KeyBelow {
    const Kel::ValueType* type;
    bool operator()(const void* a, const void* b) const { return type->compare(a, b) < 0; }
  };
  using Keys = std::set<const void*, KeyBelow>;

  struct Level {
    Datum* datum;  // stays where it is while the level is open: its parent gains no parts then
    Datum* list = nullptr;
    Keys had{KeyBelow{nullptr}};
  };

  Datum& add(const Node& node);
  Datum* addEntry(const Node& list, const void* key);

  Datum& root_;
  std::vector<Level> levels_;
};

}  // namespace Host
