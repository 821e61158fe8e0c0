#include "model/reference/Comparison.h"

#include <unordered_map>

#include "Kel/Slab.h"

namespace Reference {
namespace {

const Kel::TypeDescriptor& typeOf(const Kel::PtrInterface& object) {
  return object.fwkType().descriptor();
}

/// Ends the comparison.
struct Different {
  Text what;
};

class Comparison {
 public:
  explicit Comparison(const LibrarySide& library) : library_(library) {}

  void entities(const NodePtr& node, const Kel::PtrInterface* entity, const Text& place) {
    if (!same(node.get(), entity, place)) {
      return;
    }
    for (const Attribute& attribute : node->type.attributes) {
      const Kel::Row& row = *typeOf(*entity).row(static_cast<Kel::AttrId>(attribute.id));
      values(*node, *entity, attribute, row, place + "/" + row.name);
    }
    const std::size_t subscribers = typeOf(*entity).publisher(*entity).subscriberCount();
    equal(std::to_string(node->publisher.size() + (library_.journals(*entity) ? 1 : 0)),
          std::to_string(subscribers), place + ": subscribers");
  }

  void machines(const MachinePtr& model, const Kel::PtrInterface* machine, const Text& place) {
    if (!same(model.get(), machine, place)) {
      return;
    }
    equal(model->name, typeOf(*machine).name, place + ": type");
    equal(textOf(model->active), textOf(machine->hasNotificationActive()), place + ": active");
    equal(textOf(model->marked), textOf(machine->kelMarkedForDeletion()), place + ": marked");
    for (const Kel::Row& row : typeOf(*machine).rows) {
      attributes(*model, *machine, row, place + "." + row.name);
    }
  }

 private:
  static const char* textOf(bool value) { return value ? "true" : "false"; }

  static void equal(const Text& model, const Text& library, const Text& place) {
    if (model != library) {
      throw Different{place + ": expected \"" + model + "\", got \"" + library + "\""};
    }
  }

  // The same object always meets the same object. Returns whether there is one that was not met.
  bool same(const void* model, const void* library, const Text& place) {
    if (model == nullptr || library == nullptr) {
      equal(textOf(model != nullptr), textOf(library != nullptr), place + ": is there");
      return false;
    }
    const auto [known, isNew] = met_.try_emplace(model, library);
    const auto [back, isNewToo] = met_.try_emplace(library, model);
    if (known->second != library || back->second != model) {
      throw Different{place + ": another object than expected"};
    }
    return isNew && isNewToo;
  }

  void values(Node& node, const Kel::PtrInterface& entity, const Attribute& attribute,
              const Kel::Row& row, const Text& place) {
    switch (attribute.kind) {
      case Kind::value:
        found_.clear();
        appendText(found_, row.value(), row.find(entity, nullptr));
        equal(node.value(attribute.id), found_, place);
        break;
      case Kind::members: {
        const auto& slots = node.members(attribute.id).slots();
        keysOf(entity, row);
        equalKeys(slots, place);
        break;
      }
      case Kind::names:
        names(node, entity, row, place);
        break;
      case Kind::single:
        entities(node.entry(attribute.id, ""), entityOf(row.find(entity, nullptr)), place);
        break;
      case Kind::entries: {
        const auto& slots = node.entries(attribute.id).slots();
        keysOf(entity, row);
        equalKeys(slots, place);
        const auto values = values_;
        for (std::size_t at = 0; at != slots.size(); ++at) {
          entities(slots[at].second, entityOf(values[at]), place + "[" + slots[at].first + "]");
        }
        break;
      }
    }
  }

  static const Kel::PtrInterface* entityOf(const void* found) {
    return static_cast<const Kel::PtrInterface*>(found);
  }

  void names(const Node& node, const Kel::PtrInterface& entity, const Kel::Row& row,
             const Text& place) {
    Text model;
    for (const auto& [key, name] : node.names()) {
      model.append(key).append("=").append(name).append(" ");
    }
    struct Context {
      const Kel::Row& row;
      Text text;
    } context{row, {}};
    row.walk(entity, &context, [](void* to, const void* key, const void* value) {
      Context& at = *static_cast<Context*>(to);
      at.row.key().append(at.text, key);
      at.row.value().append(at.text.append("="), value);
      at.text += " ";
    });
    equal(model, context.text, place);
  }

  // Collects keys and values in the order of a walk.
  void keysOf(const Kel::PtrInterface& entity, const Kel::Row& row) {
    keys_.clear();
    values_.clear();
    row_ = &row;
    row.walk(entity, this, [](void* context, const void* key, const void* value) {
      Comparison& self = *static_cast<Comparison*>(context);
      self.row_->key().append(self.keys_, key);
      self.keys_ += '\n';
      self.values_.push_back(value);
    });
  }
  template <class Slots>
  void equalKeys(const Slots& slots, const Text& place) {
    found_.clear();
    for (const auto& slot : slots) {
      found_.append(slot.first).append("\n");
    }
    equal(found_, keys_, place + ": keys");
  }

  void attributes(const Machine& model, const Kel::PtrInterface& machine, const Kel::Row& row,
                  const Text& place) {
    const std::string_view target = row.target == nullptr ? "" : row.target().name;
    const Text name = row.name;
    switch (row.kind) {
      case Kel::RowKind::input:
      case Kel::RowKind::object: {
        const auto* const object = entityOf(row.find(machine, nullptr));
        if (target == "VelaPolicyMonitor::UpdateCookie") {
          cookies(model.cookie, object, place);
        } else {
          entities(target.starts_with("VelaL3::")     ? model.v1
                   : target.starts_with("VelaL3V2::") ? model.v2
                                                      : model.record,
                   object, place);
        }
        break;
      }
      case Kel::RowKind::children: {
        keysOf(machine, row);
        equalKeys(model.children.slots(), place);
        const auto values = values_;
        for (std::size_t at = 0; at != values.size(); ++at) {
          const auto& [key, child] = model.children.slots()[at];
          machines(child, entityOf(values[at]), place + "[" + key + "]");
        }
        break;
      }
      case Kel::RowKind::single:
        machines(model.matchSm, entityOf(row.find(machine, nullptr)), place);
        break;
      default:
        found_.clear();
        row.value().append(found_, row.find(machine, nullptr));
        equal(name == "initialized"    ? textOf(model.initialized)
              : name == "initComplete" ? textOf(model.initComplete)
              : name == "netVrfName"   ? model.netVrfName
                                       : model.key,
              found_, place);
        break;
    }
  }

  void cookies(const CookiePtr& model, const Kel::PtrInterface* cookie, const Text& place) {
    if (same(model.get(), cookie, place)) {
      found_.clear();
      const Kel::Row& row = typeOf(*cookie).rows.front();
      row.value().append(found_, row.find(*cookie, nullptr));
      equal(textOf(model->updated), found_, place + ".updated");
    }
  }

  const LibrarySide& library_;
  std::unordered_map<const void*, const void*> met_;
  Text found_;
  Text keys_;
  std::vector<const void*> values_;
  const Kel::Row* row_ = nullptr;
};

// Of the machines and the cookies only: entities are held by whoever looks at them.
void equalCounts(const World& world) {
  struct Context {
    const World& world;
    Text different;
  } context{world, {}};
  Kel::Slab::forEach(
      [](void* to, const Kel::Slab& slab) {
        Context& at = *static_cast<Context*>(to);
        const std::string_view name = slab.typeName();
        const bool counted = name.ends_with("Sm") || name.ends_with("UpdateCookie");
        const auto known = at.world.live.find(name);
        const long expected = known == at.world.live.end() ? 0 : known->second;
        if (counted && expected != static_cast<long>(slab.live())) {
          at.different = Text(name) + ": expected " + std::to_string(expected) + " to live, got " +
                         std::to_string(slab.live());
        }
      },
      &context);
  if (!context.different.empty()) {
    throw Different{context.different};
  }
}

}  // namespace

Text differenceOf(ModelSide& model, const LibrarySide& library) {
  static constexpr const char* kTops[] = {"policy version 1", "service version 1", "status",
                                          "policy version 2", "service version 2"};
  Comparison comparison(library);
  try {
    for (std::size_t top = 0; top != model.tops.size(); ++top) {
      comparison.entities(model.tops[top], library.tops[top].get(), kTops[top]);
    }
    comparison.machines(model.roots[0], library.roots[0].get(), "policy root");
    comparison.machines(model.roots[1], library.roots[1].get(), "service root");
    for (std::size_t slot = 0; slot != kSlots; ++slot) {
      comparison.entities(model.kept[slot], library.kept[slot].get(),
                          "kept " + std::to_string(slot));
      comparison.machines(model.held[slot], library.held[slot].get(),
                          "held " + std::to_string(slot));
    }
    equalCounts(model.world);
    if (model.world.lost != library.lost()) {
      throw Different{"lines lost: expected " + std::to_string(model.world.lost) + ", got " +
                      std::to_string(library.lost())};
    }
  } catch (const Different& different) {
    return different.what;
  }
  return {};
}

}  // namespace Reference
