#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Reference {

using Text = std::string;

/// In what order a collection is walked.
enum class Order : unsigned char {
  table,       ///< as inserted; the last entry takes the place of one that goes
  descending,  ///< from the highest number to the lowest
};

/// Keys with values, in a plain vector. Walks over it survive every change, by the rules that are
/// told in src/framework/Kel/Walk.h: what is there from the beginning of a walk to its turn is
/// visited once; in a table nothing that was inserted meanwhile, in a sorted collection what still
/// lies ahead.
template <class V>
class Collection {
 public:
  class Walk {
   public:
    explicit Walk(Collection& collection) : collection_(collection) {
      collection_.walks_.push_back(this);
      end_ = collection_.slots_.size();
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    ~Walk() { std::erase(collection_.walks_, this); }

    /// Stands on the next entry; false at the end.
    bool next() {
      value.reset();
      if (done_ || !step()) {
        done_ = true;
        at_ = end_ = 0;
        return false;
      }
      return true;
    }

    Text key;
    std::optional<V> value;

   private:
    friend class Collection;

    bool step() {
      auto& slots = collection_.slots_;
      if (collection_.order_ == Order::descending) {
        const auto lower = std::find_if(slots.begin(), slots.end(), [this](const auto& slot) {
          return !begun_ || std::stoul(slot.first) < std::stoul(key);
        });
        begun_ = true;
        return lower != slots.end() && stand(*lower);
      }
      return at_ != end_ && stand(slots[at_++]);
    }
    bool stand(const std::pair<Text, V>& slot) {
      key = slot.first;
      value = slot.second;
      return true;
    }

    Collection& collection_;
    std::size_t at_ = 0;   // those below have had their turn
    std::size_t end_ = 0;  // those from here on are new
    bool begun_ = false;
    bool done_ = false;
  };

  explicit Collection(Order order = Order::table) : order_(order) {}
  Collection(const Collection&) = delete;
  Collection& operator=(const Collection&) = delete;
  ~Collection() = default;

  const V* find(const Text& key) const {
    const auto at = place(key);
    return at == slots_.end() ? nullptr : &at->second;
  }
  bool has(const Text& key) const { return find(key) != nullptr; }

  /// The key is absent.
  void insert(const Text& key, V value) {
    auto before = slots_.end();
    if (order_ == Order::descending) {
      before = std::find_if(slots_.begin(), slots_.end(), [&key](const auto& slot) {
        return std::stoul(slot.first) < std::stoul(key);
      });
    }
    slots_.emplace(before, key, std::move(value));
  }

  /// Takes the entry out; empty when absent.
  std::optional<V> take(const Text& key) {
    const auto at = place(key);
    if (at == slots_.end()) {
      return std::nullopt;
    }
    std::optional<V> taken(at->second);
    if (order_ == Order::descending) {
      slots_.erase(at);
    } else {
      closeUp(static_cast<std::size_t>(at - slots_.begin()));
    }
    return taken;
  }

  const std::vector<std::pair<Text, V>>& slots() const { return slots_; }
  bool empty() const { return slots_.empty(); }

 private:
  auto place(const Text& key) const {
    return std::find_if(slots_.begin(), slots_.end(),
                        [&key](const auto& slot) { return slot.first == key; });
  }

  // Every part of the table (had their turn, due, new) closes its own rank: its last entry takes
  // the hole and leaves one at the beginning of the next part.
  void closeUp(std::size_t hole) {
    std::vector<std::size_t*> boundaries;
    for (Walk* const walk : walks_) {
      boundaries.push_back(&walk->at_);
      boundaries.push_back(&walk->end_);
    }
    std::sort(boundaries.begin(), boundaries.end(), [](auto* a, auto* b) { return *a < *b; });
    for (std::size_t* const boundary : boundaries) {
      if (*boundary > hole) {
        --*boundary;
        moveInto(hole, *boundary);
      }
    }
    moveInto(hole, slots_.size() - 1);
    slots_.pop_back();
  }
  void moveInto(std::size_t& hole, std::size_t from) {
    if (from != hole) {
      slots_[hole] = std::move(slots_[from]);
    }
    hole = from;
  }

  Order order_;
  std::vector<std::pair<Text, V>> slots_;
  std::vector<Walk*> walks_;
};

}  // namespace Reference
