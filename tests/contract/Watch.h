#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "Kel/Observer.h"
#include "Kel/Slab.h"
#include "contract/World.h"

namespace Contract {

/// An observer of both version-2 trees, with all that comes into them while it lives: it runs a
/// function at every notification, with its number, from 1.
class Watch {
 public:
  using Function = std::function<void(int number)>;

  Watch(World& world, Function function) : function_(std::move(function)) {
    follow(*world.policySrcV2);
    follow(*world.sdSourceV2);
  }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  /// How many notifications there were.
  int count() const { return count_; }

 private:
  template <class Entity>
  void follow(const Entity& entity) {
    auto& observer = observers_[&entity];
    if (observer == nullptr) {
      observer = std::make_unique<Kel::Observer>(
          entity, [this, &entity](Kel::AttrId /*id*/, const void* /*key*/) {
            forEachChild(entity, [this](const auto& child) { this->follow(child); });
            function_(++count_);
          });
      forEachChild(entity, [this](const auto& child) { this->follow(child); });
    }
  }

  Function function_;
  int count_ = 0;
  std::map<const void*, std::unique_ptr<Kel::Observer>> observers_;
};

/// The objects that there are of each type.
inline std::map<std::string, std::size_t> liveObjects() {
  std::map<std::string, std::size_t> live;
  Kel::Slab::forEach(
      [](void* context, const Kel::Slab& slab) {
        if (slab.live() != 0) {
          (*static_cast<std::map<std::string, std::size_t>*>(context))[slab.typeName()] =
              slab.live();
        }
      },
      &live);
  return live;
}

/// The same, of state machines and cookies only.
inline std::map<std::string, std::size_t> liveMachines() {
  auto live = liveObjects();
  std::erase_if(live, [](const auto& type) {
    return !type.first.ends_with("Sm") && !type.first.ends_with("Cookie");
  });
  return live;
}

}  // namespace Contract
