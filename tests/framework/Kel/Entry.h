#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "Brix/Counted.h"
#include "Brix/Ptr.h"

/// What the maps of these tests hold: an object with a key, counted, which may do something when it
/// ends.
template <class Key>
class Entry : public Brix::Counted {
 public:
  explicit Entry(Key key) : key_(std::move(key)) { ++alive; }
  ~Entry() override {
    --alive;
    if (onEnd) {
      onEnd();
    }
  }
  static Brix::Ptr<Entry> make(Key key) {
    return Brix::Ptr<Entry>(new Entry(std::move(key)), Brix::adopt);
  }

  const Key& key() const noexcept { return key_; }
  Key keyByValue() const noexcept { return key_; }

  static inline std::size_t alive = 0;
  std::function<void()> onEnd;

 private:
  Key key_;
};
