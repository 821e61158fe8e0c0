#include "model/reference/LibrarySide.h"

#include "KelBrix/KelBrix.h"
#include "VelaL3/VelaL3.h"
#include "VelaL3V2/VelaL3V2.h"
#include "monitor/Status.h"
#include "policy/VelaPolicyTranslateSm.h"
#include "servicedevice/VelaServiceDeviceTranslateSm.h"

namespace Reference {
namespace {

using Verb = Operation::Verb;

const Kel::TypeDescriptor& typeOf(const Kel::PtrInterface& object) {
  return object.fwkType().descriptor();
}

bool holdsEntities(const Kel::Row& row) {
  return row.kind == Kel::RowKind::entries || row.kind == Kel::RowKind::single;
}

const void* keyOf(const Kel::Row& row, const Text& key) {
  return row.key == nullptr ? nullptr : typed(row.key(), key);
}

Kel::PtrInterface* below(const Kel::PtrInterface& object, const Kel::Row& row, const Text& key) {
  return const_cast<Kel::PtrInterface*>(
      static_cast<const Kel::PtrInterface*>(row.find(object, keyOf(row, key))));
}

// As xDelAll() does: one by one, during a walk.
void clear(Kel::PtrInterface& object, const Kel::Row& row) {
  if (row.kind == Kel::RowKind::single) {
    row.erase(object, nullptr);
  } else if (row.walk != nullptr) {
    struct Place {
      Kel::PtrInterface& object;
      const Kel::Row& row;
    } place{object, row};
    row.walk(object, &place, [](void* context, const void* key, const void* /*value*/) {
      const Place& at = *static_cast<Place*>(context);
      at.row.erase(at.object, key);
    });
  }
}

template <class T>
Brix::Ptr<T> as(const ObjectPtr& object) {
  return Brix::Ptr<T>(static_cast<T*>(object.get()));
}

}  // namespace

/// Does operations when an entity tells of something.
struct LibrarySide::Observer : Brix::Subscriber {
  Observer(LibrarySide& side_, ObjectPtr entity_, const Operation& operation)
      : Subscriber(&Observer::notify),
        side(side_),
        entity(std::move(entity_)),
        what(operation),
        left(operation.times) {
    typeOf(*entity).publisher(*entity).subscriberAdd(*this);
  }
  Observer(const Observer&) = delete;
  Observer& operator=(const Observer&) = delete;
  ~Observer() { typeOf(*entity).publisher(*entity).subscriberRemove(*this); }

  static void notify(const Brix::Publisher& /*publisher*/, Subscriber& slot, Brix::AttrId id,
                     const void* /*key*/, const void* /*value*/) {
    auto& self = static_cast<Observer&>(slot);
    if (self.left == 0 || (self.what.id != 0 && self.what.id != id)) {
      return;
    }
    --self.left;
    LibrarySide& side = self.side;
    side.log += "# observed\n";
    // A copy: an observer may be replaced by what it does.
    const std::vector<Operation> nested = self.what.nested;
    for (const Operation& each : nested) {
      if (each.verb == Verb::raise) {
        side.refuse();
      }
      side.apply(each);
    }
  }

  LibrarySide& side;
  ObjectPtr entity;
  Operation what;
  int left;
};

/// A notifiee of the old style.
struct LibrarySide::Listener final : KelBrix::LegacyNotifiee {
  Listener(LibrarySide& side_, std::size_t slot_, ObjectPtr machine_, bool visitNow)
      : side(side_), slot(slot_), machine(std::move(machine_)) {
    KelBrix::addLegacyNotifiee(*machine, *this, visitNow);
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() { KelBrix::removeLegacyNotifiee(*machine, *this); }

  void notify(Kel::AttrId id, const void* /*value*/) override {
    side.log += "~ " + std::to_string(slot) + " " + std::to_string(id) + "\n";
    if (refusals != 0) {
      --refusals;
      side.refuse();
    }
  }

  LibrarySide& side;
  std::size_t slot;
  ObjectPtr machine;
  int refusals = 0;
};

/// Logs what an entity and all that comes to stand below it tell of.
struct LibrarySide::Recorder : Brix::Subscriber {
  Recorder(LibrarySide& side_, const Kel::PtrInterface& entity_)
      : Subscriber(&Recorder::notify), side(side_), entity(&entity_) {
    const Kel::TypeDescriptor& type = typeOf(entity_);
    head = Text("! ") + type.name + " ";
    if (const Kel::Row& first = type.rows.front(); first.kind == Kel::RowKind::constant) {
      first.value().append(head, first.find(entity_, nullptr));
    }
    type.publisher(entity_).subscriberAdd(*this);
  }
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;
  ~Recorder() { typeOf(*entity).publisher(*entity).subscriberRemove(*this); }

  static void notify(const Brix::Publisher& /*publisher*/, Subscriber& slot, Brix::AttrId id,
                     const void* key, const void* /*value*/) {
    auto& self = static_cast<Recorder&>(slot);
    const Kel::Row& row = *typeOf(*self.entity).row(id);
    self.side.log.append(self.head).append(" ").append(std::to_string(id)).append(" ");
    if (row.key != nullptr && key != nullptr) {
      row.key().append(self.side.log, key);
    }
    self.side.log += "\n";
    if (holdsEntities(row)) {
      if (const void* const made = row.find(*self.entity, key)) {
        self.side.record(*static_cast<const Kel::PtrInterface*>(made));
      }
    }
  }

  LibrarySide& side;
  Brix::Ptr<const Kel::PtrInterface> entity;
  Text head;
};

LibrarySide::LibrarySide(const Seen& seen)
    : tops{VelaL3::VelaPolicySourceConfig::VelaPolicySourceConfigIs(),
           VelaL3::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs(),
           VelaPolicyMonitor::Status::StatusIs(),
           VelaL3V2::VelaPolicySourceConfig::VelaPolicySourceConfigIs(),
           VelaL3V2::ServiceDeviceSourceConfig::ServiceDeviceSourceConfigIs()} {
  Kel::System::clockIs([this] { return time; });
  sinkBefore_ =
      Kel::TextTrace::sinkIs(Kel::TextTrace::callbackSink([this](const Kel::TextTrace::Line& line) {
        if (binary_) {
          traced_ += static_cast<char>('0' + line.level);
          traced_.append(" ").append(line.message).append("\n");
        }
        if (losing_ != 0) {
          --losing_;
          throw Refused();
        }
        log += static_cast<char>('0' + line.level);
        log.append(" ").append(line.message).append("\n");
      }));
  Kel::TextTrace::facility("VelaPolicyMonitor").levelsAre(Kel::TextTrace::kAllLevels);
  if (seen.binary) {
    binary_ = std::make_unique<BinaryTrace>();
  }
  for (std::size_t top = 2; seen.journal && top != tops.size(); ++top) {
    record(*tops[top]);
  }
}

LibrarySide::~LibrarySide() {
  refusals.clear();  // of an operation that has ended another process
  close();
  Kel::TextTrace::facility("VelaPolicyMonitor").levelsAre(0);
  Kel::TextTrace::sinkIs(std::move(sinkBefore_));
  Kel::System::clockIs({});
}

void LibrarySide::close() {
  for (std::size_t slot = 0; slot != kSlots; ++slot) {
    observers_[slot].reset();
    listeners_[slot].reset();
    held[slot].reset();
    kept[slot].reset();
  }
  roots[0].reset();
  roots[1].reset();
}

void LibrarySide::refuse() {
  const bool refuses = !refusals.empty() && refusals.front();
  if (!refusals.empty()) {
    refusals.pop_front();
  }
  if (refuses) {
    throw Refused();
  }
}

void LibrarySide::record(const Kel::PtrInterface& entity) {
  auto& recorder = recorders_[&entity];
  if (!recorder) {
    recorder = std::make_unique<Recorder>(*this, entity);
  }
}

void LibrarySide::apply(const Operation& operation) {
  try {
    if (operation.verb >= Verb::start) {
      toRoot(operation);
    } else if (operation.verb >= Verb::call) {
      toMachine(operation);
    } else {
      toNode(operation);
    }
  } catch (const Kel::RangeException& error) {
    log.append("? ").append(error.what()).append("\n");
  } catch (const Kel::ReinstantiationException&) {
    log += "? re-instantiation\n";
  } catch (const Refused&) {
    log += "? refused\n";
  }
}

ObjectPtr LibrarySide::node(const Place& place, bool create) {
  ObjectPtr at =
      place.from == From::kept ? kept[place.slot] : tops[static_cast<std::size_t>(place.from)];
  if (place.from == From::kept && (!at || std::string_view(typeOf(*at).name) != place.type)) {
    return nullptr;
  }
  for (const auto& [id, key] : place.steps) {
    const Kel::Row* const row = at ? typeOf(*at).row(static_cast<Kel::AttrId>(id)) : nullptr;
    if (row == nullptr) {
      return nullptr;
    }
    if (create) {
      row->put(*at, keyOf(*row, key), nullptr);
    }
    at = ObjectPtr(below(*at, *row, key));  // gone again, if an observer has deleted it
  }
  return at;
}

ObjectPtr LibrarySide::machine(const Place& place) {
  ObjectPtr at =
      place.from == From::held ? held[place.slot] : roots[place.from == From::policyRoot ? 0 : 1];
  for (const auto& [id, key] : place.steps) {
    if (!at) {
      return nullptr;
    }
    Kel::PtrInterface* child = nullptr;
    for (const Kel::Row& row : typeOf(*at).rows) {
      if (row.kind == (key == "match" ? Kel::RowKind::single : Kel::RowKind::children)) {
        child = below(*at, row, key);
      }
    }
    at = ObjectPtr(child);
  }
  return at;
}

void LibrarySide::toNode(const Operation& operation) {
  if (operation.verb == Verb::forget) {
    const ObjectPtr gone = std::exchange(kept[operation.slot], nullptr);
    return;
  }
  if (operation.verb == Verb::unobserve) {
    const auto gone = std::exchange(observers_[operation.slot], nullptr);
    return;
  }
  if (operation.verb == Verb::lose) {
    losing_ = operation.times;
    return;
  }
  const ObjectPtr at = node(operation.at, operation.create);
  if (!at) {
    return;
  }
  const auto id = static_cast<Kel::AttrId>(operation.id);
  const Kel::Row* const row = typeOf(*at).row(id);
  if (operation.verb == Verb::keep) {
    std::exchange(kept[operation.slot], at).reset();
    return;
  }
  if (operation.id != 0 && row == nullptr) {
    return;
  }
  switch (operation.verb) {
    case Verb::put:
      row->put(*at, keyOf(*row, operation.key), nullptr);
      break;
    case Verb::write:
      row->put(*at, nullptr, typed(row->value(), operation.value));
      break;
    case Verb::name:
      row->put(*at, keyOf(*row, operation.key), typed(row->value(), operation.value));
      break;
    case Verb::erase:
      row->erase(*at, keyOf(*row, operation.key));
      break;
    case Verb::clear:
      clear(*at, *row);
      break;
    case Verb::notify:
      typeOf(*at).publisher(*at).publish(id, keyOf(*row, operation.key));
      break;
    case Verb::observe: {
      const auto gone = std::exchange(observers_[operation.slot], nullptr);
      observers_[operation.slot] = std::make_shared<Observer>(*this, at, operation);
      break;
    }
    default:
      break;
  }
}

void LibrarySide::toMachine(const Operation& operation) {
  if (operation.verb == Verb::release) {
    const ObjectPtr gone = std::exchange(held[operation.slot], nullptr);
    return;
  }
  if (operation.verb == Verb::unlisten) {
    const auto gone = std::exchange(listeners_[operation.slot], nullptr);
    return;
  }
  const ObjectPtr at = machine(operation.at);
  if (!at) {
    return;
  }
  switch (operation.verb) {
    case Verb::call:
      callMachine(*at, operation.value, operation.key);
      break;
    case Verb::suspend:
    case Verb::resume:
      at->hasNotificationActiveIs(operation.verb == Verb::resume);
      break;
    case Verb::mark:
    case Verb::unmark:
      at->kelDoZombieReactors(operation.verb == Verb::mark);
      break;
    case Verb::hold:
      std::exchange(held[operation.slot], at).reset();
      break;
    case Verb::listen:
      if (at->notifieeList()) {
        const auto gone = std::exchange(listeners_[operation.slot], nullptr);
        listeners_[operation.slot] =
            std::make_shared<Listener>(*this, operation.slot, at, operation.create);
        listeners_[operation.slot]->refusals = operation.times;
      }
      break;
    default:
      changeMachine(*at, operation);
      break;
  }
}

void LibrarySide::toRoot(const Operation& operation) {
  using namespace VelaPolicyMonitor;  // NOLINT(google-build-using-namespace): what is tested
  const bool policy = operation.at.from == From::policyRoot;
  ObjectPtr& root = roots[policy ? 0 : 1];
  if (operation.verb == Verb::stop) {
    const ObjectPtr gone = std::exchange(root, nullptr);
    return;
  }
  if (root) {
    return;
  }
  const ObjectPtr v1 = operation.value == "version 1" ? nullptr : tops[policy ? 0 : 1];
  const bool noV2 = operation.value == "version 2";
  const auto status = as<Status>(noV2 || operation.value == "status" ? nullptr : tops[2]);
  ObjectPtr made;
  if (policy) {
    made = policyTranslateRootSmFactory(
        as<const VelaL3::VelaPolicySourceConfig>(v1),
        as<VelaL3V2::VelaPolicySourceConfig>(noV2 ? nullptr : tops[3]), status);
  } else {
    made = serviceDeviceTranslateRootSmFactory(
        as<const VelaL3::ServiceDeviceSourceConfig>(v1),
        as<VelaL3V2::ServiceDeviceSourceConfig>(noV2 ? nullptr : tops[4]), status);
  }
  if (!root) {
    root = std::move(made);
  }
}

}  // namespace Reference
