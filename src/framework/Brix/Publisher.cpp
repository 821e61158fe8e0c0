#include "Brix/Publisher.h"

#include <algorithm>
#include <exception>
#include <new>

#include "Brix/Ptr.h"

namespace Brix {

struct SubscriberList::Block {
  std::uint32_t capacity;
  std::uint32_t used;    // slots in use, holes included
  std::uint32_t holes;   // slots emptied while a round was under way
  std::uint32_t rounds;  // rounds under way

  Subscriber** slots() noexcept { return reinterpret_cast<Subscriber**>(this + 1); }
  Subscriber** end() noexcept { return slots() + used; }

  // Deliberate: registration cannot fail; without memory for it the process ends.
  static Block* make(std::uint32_t capacity) noexcept {
    void* const memory = ::operator new(sizeof(Block) + capacity * sizeof(Subscriber*));
    return new (memory) Block{capacity, 0, 0, 0};
  }
};

SubscriberList::~SubscriberList() {
  if (isList()) {
    ::operator delete(&block());
  }
}

std::size_t SubscriberList::size() const noexcept {
  if (isList()) {
    return block().used - block().holes;
  }
  return word_ == 0 ? 0 : 1;
}

void SubscriberList::add(Subscriber& subscriber) noexcept {
  if (word_ == 0) {
    word_ = reinterpret_cast<std::uintptr_t>(&subscriber);
    return;
  }
  if (!isList()) {
    if (single() == &subscriber) {
      return;
    }
    Block* list = Block::make(4);
    list->slots()[list->used++] = single();
    word_ = reinterpret_cast<std::uintptr_t>(list) | 1U;
  }
  Block* list = &block();
  if (std::find(list->slots(), list->end(), &subscriber) != list->end()) {
    return;
  }
  if (list->used == list->capacity) {
    grow();
    list = &block();
  }
  list->slots()[list->used++] = &subscriber;
}

void SubscriberList::remove(Subscriber& subscriber) noexcept {
  if (!isList()) {
    if (single() == &subscriber) {
      word_ = 0;
    }
    return;
  }
  Block& list = block();
  Subscriber** const at = std::find(list.slots(), list.end(), &subscriber);
  if (at == list.end()) {
    return;
  }
  *at = nullptr;
  ++list.holes;
  if (list.rounds == 0) {
    closeRanks();
  }
}

std::vector<Subscriber*> SubscriberList::all() const {
  if (!isList()) {
    return word_ == 0 ? std::vector<Subscriber*>() : std::vector<Subscriber*>{single()};
  }
  std::vector<Subscriber*> present(block().slots(), block().end());
  std::erase(present, nullptr);
  return present;
}

void SubscriberList::grow() noexcept {
  Block& old = block();
  Block* larger = Block::make(old.capacity * 2);
  larger->used = old.used;
  larger->holes = old.holes;
  larger->rounds = old.rounds;
  std::copy(old.slots(), old.end(), larger->slots());
  word_ = reinterpret_cast<std::uintptr_t>(larger) | 1U;
  ::operator delete(&old);
}

void SubscriberList::closeRanks() noexcept {
  Block& list = block();
  Subscriber** const end = std::remove(list.slots(), list.end(), nullptr);
  list.used = static_cast<std::uint32_t>(end - list.slots());
  list.holes = 0;
  if (list.used <= 1) {
    word_ = list.used == 0 ? 0 : reinterpret_cast<std::uintptr_t>(list.slots()[0]);
    ::operator delete(&list);
  }
}

void Publisher::publishToList(AttrId id, const void* key, const void* value) const {
  const Publisher self = *this;  // the handle may lie in what a subscriber destroys
  const Ptr<const Counted> alive(self.owner_);
  SubscriberList& subscribers = *self.subscribers_;
  const std::uint32_t due = subscribers.block().used;
  ++subscribers.block().rounds;
  std::exception_ptr first;
  for (std::uint32_t i = 0; i < due; ++i) {
    Subscriber* const subscriber = subscribers.block().slots()[i];
    if (subscriber == nullptr) {
      continue;
    }
    try {
      subscriber->dispatch()(self, *subscriber, id, key, value);
    } catch (...) {
      if (!first) {
        first = std::current_exception();
      }
    }
  }
  SubscriberList::Block& list = subscribers.block();
  if (--list.rounds == 0 && list.holes != 0) {
    subscribers.closeRanks();
  }
  if (first) {
    std::rethrow_exception(first);
  }
}

}  // namespace Brix
