#pragma once

#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "Keys.h"
#include "floor/DenseTable.h"

#ifdef BENCH_ABSL
#include <absl/container/flat_hash_map.h>
#endif

/// The containers that a mirror without a framework may be made of. Each kit has a Set, a Map, and
/// a Sorted map; values of maps stay where they are.
namespace Bench {

/// The floor: nothing but what the data need.
struct Lean {
  template <class Key>
  class Set {
   public:
    bool insert(const Key& key) { return !contains(key) && (table_.append(key), true); }
    bool erase(const Key& key) { return table_.erase(key); }
    bool contains(const Key& key) const { return table_.find(key) != nullptr; }
    void copyFrom(const Set& other) {
      if (other.table_.size() != 0) {
        table_.reserve(other.table_.size());
      }
      for (const Key& key : other.table_) {
        table_.append(key);
      }
    }

   private:
    struct Itself {
      const Key& operator()(const Key& key) const { return key; }
    };
    DenseTable<Key, Itself> table_;
  };

  template <class Key, class Value>
  class Map {
   public:
    Map() = default;
    Map(const Map&) = delete;
    Map& operator=(const Map&) = delete;
    ~Map() {
      for (Node* const node : table_) {
        delete node;
      }
    }
    Value* at(const Key& key) {
      Node* const* found = table_.find(key);
      if (found == nullptr) {
        auto* const made = new Node{key, {}};
        table_.append(made);
        return &made->value;
      }
      return &(*found)->value;
    }
    template <class Visit>
    void forEach(Visit visit) const {
      for (const Node* const node : table_) {
        visit(node->key, node->value);
      }
    }

   private:
    struct Node {
      Key key;
      Value value;
    };
    struct KeyOf {
      const Key& operator()(const Node* node) const { return node->key; }
    };
    DenseTable<Node*, KeyOf> table_;
  };
  template <class Key, class Value>
  using Sorted = Map<Key, Value>;
};

/// What the containers of the standard library and those with the same members share.
template <class Base>
struct SetOn : Base {
  bool insert(const auto& key) { return Base::insert(key).second; }
  bool erase(const auto& key) { return Base::erase(key) != 0; }
  void copyFrom(const SetOn& other) { Base::operator=(other); }
};
template <class Base>
class MapOn {
 public:
  auto* at(const auto& key) { return &map_[key]; }
  template <class Visit>
  void forEach(Visit visit) const {
    for (const auto& [key, value] : map_) {
      visit(key, value);
    }
  }

 private:
  Base map_;
};

struct Std {
  template <class Key>
  using Set = SetOn<std::unordered_set<Key, KeyHash>>;
  template <class Key, class Value>
  using Map = MapOn<std::unordered_map<Key, Value, KeyHash>>;
  template <class Key, class Value>
  using Sorted = MapOn<std::map<Key, Value>>;
};

#ifdef BENCH_ABSL
struct Absl {
  template <class Key>
  using Set = SetOn<absl::flat_hash_set<Key, KeyHash>>;
  template <class Key, class Value>
  class Map {
   public:
    Value* at(const Key& key) {
      auto& place = map_[key];
      place = place == nullptr ? std::make_unique<Value>() : std::move(place);
      return place.get();
    }
    template <class Visit>
    void forEach(Visit visit) const {
      for (const auto& [key, value] : map_) {
        visit(key, *value);
      }
    }

   private:
    absl::flat_hash_map<Key, std::unique_ptr<Value>, KeyHash> map_;
  };
  template <class Key, class Value>
  using Sorted = Map<Key, Value>;
};
#endif

}  // namespace Bench
