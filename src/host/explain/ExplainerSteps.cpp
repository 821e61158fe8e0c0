// The state machines and version 2 on the way, and the end of it.

#include <algorithm>

#include "explain/Counterpart.h"
#include "explain/Explainer.h"
#include "explain/Remedies.h"
#include "text/Concat.h"

namespace Host {
namespace {

using Kel::RowKind;

std::string typeOf(const Kel::PtrInterface& object) { return object.fwkType().descriptor().name; }

/// The attribute of a state machine that has the machines which watch what `node` describes.
const Kel::Row* childrenFor(const Kel::PtrInterface& machine, const Node& node) {
  const std::string_view wanted = node.row->target().name;
  const auto isWatched = [wanted](const Kel::Row& row) {
    return row.kind == RowKind::input && row.target().name == wanted;
  };
  const auto rows = machine.fwkType().descriptor().rows;
  const auto at = std::ranges::find_if(rows, [&isWatched](const Kel::Row& row) {
    return (row.kind == RowKind::children || row.kind == RowKind::single) &&
           std::ranges::any_of(row.target().rows, isWatched);
  });
  return at == rows.end() ? nullptr : &*at;
}

/// The object of this type that a machine was given; null when it was given none.
const Kel::PtrInterface* givenOf(const Kel::PtrInterface& machine, const std::string& type) {
  for (const Kel::Row& row : machine.fwkType().descriptor().rows) {
    if ((row.kind == RowKind::object || row.kind == RowKind::input) && row.target().name == type) {
      return asObject(row.find(machine, nullptr));
    }
  }
  return nullptr;
}

const void* valueOf(const Kel::PtrInterface& object, std::string_view name) {
  const Kel::Row* const row = object.fwkType().descriptor().row(name);
  return row == nullptr ? nullptr : row->find(object, nullptr);
}

}  // namespace

void Explainer::machine(const OwnedStep& step1, const Object* object2) {
  const Kel::Row* const row = machine_ == nullptr ? nullptr : childrenFor(*machine_, *step1.node);
  if (row == nullptr) {
    machine_ = nullptr;
    return;
  }
  machine_ = asObject(row->find(*machine_, step1.keyPlace()));
  if (machine_ == nullptr && lackedIn1_ != nullptr) {
    return;  // it is not missed
  }
  const std::string key = step1.key == nullptr ? "" : keyText(*step1.node, step1.keyPlace());
  const std::string path = path1To(step1);
  if (machine_ != nullptr) {
    const std::string fault = faultOf(*machine_, object2);
    return add({row->name, key, "", fault.empty(), fault.empty() ? "keeps it up to date" : fault},
               concat({"the state machine ", row->name, fault.empty() ? "" : " ", fault}),
               notifyLine(path));
  }
  const std::string past = this->past().missed
                               ? "; something was changed while the tree was suspended"
                           : this->past().raised ? "; a handler has raised an error"
                                                 : "";
  add({row->name, key, "", false, concat({"there is none", past})},
      concat({"no state machine (", row->name, ") has taken it up; one does when it is announced",
              past}),
      notifyLine(path));
}

/// What is wrong with a machine; empty: nothing.
std::string Explainer::faultOf(const Object& machine, const Object* object2) const {
  if (served_->record != nullptr) {
    const Object* const followed = givenOf(machine, typeOf(*served_->record));
    if (followed != nullptr && followed != served_->record.get()) {
      return "follows another record than the one that is there now, until the device is announced";
    }
  }
  if (object2 != nullptr) {
    const Object* const written = givenOf(machine, typeOf(*object2));
    if (written != nullptr && written != object2) {
      return "writes to an entry that is in version 2 no more";
    }
  }
  return {};
}

void Explainer::version2(const OwnedStep& step, const OwnedStep* step1, const Object* parent1) {
  if (object2_ == nullptr) {
    return;
  }
  const Node& node = *step.node;
  const std::string key = step.key == nullptr ? "" : keyText(node, step.keyPlace());
  const void* const value = node.row->find(*object2_, step.keyPlace());
  const bool isLeaf = node.kind == Node::Kind::leaf;
  bool found = isLeaf ? !node.type->absent(value) : value != nullptr;
  std::string text = found ? "in version 2" : "not in version 2";
  // What has a machine of its own in the policy tree, below the VRF, is not taken up again.
  const auto level = static_cast<std::size_t>(&step - way2_.data());
  const bool isStuck = policies_ && node.kind == Node::Kind::list && level > kVrf;
  const bool wasShared = level == kVrf && served_->record != nullptr &&
                         history_.wasShared(Kel::textOf(served_->record->deviceName()), key);
  std::string why =
      concat({node.name, key.empty() ? "" : concat({" \"", key, "\""}), " is missing there",
              isStuck ? ", although its state machine lives; clean the tree up and initialize it"
              : wasShared ? ": another VRF that had this name has taken it along"
                          : ""});
  found2_ += found ? 1 : 0;
  if (isLeaf && found) {
    const std::string now = valueText(*node.type, value);
    const auto wanted = wantedText(step, step1, parent1);
    found = !wanted || *wanted == now;
    text += concat({": ", now});
    why = found ? "" : concat({"it has \"", now, "\" there, and \"", *wanted, "\" is due"});
  }
  add({concat({"version-2 ", node.name}), key, path2To(step), found, text}, why,
      step1 != nullptr && machine_ != nullptr && !isStuck ? notifyLine(path1To(*step1)) : "");
  object2_ = node.isObject() ? asObject(value) : object2_;
}

/// What a leaf of version 2 has to be; none: that is no copy.
std::optional<std::string> Explainer::wantedText(const OwnedStep& leaf2, const OwnedStep* step1,
                                                 const Object* parent1) const {
  const Node& leaf = *leaf2.node;
  if (leaf.name == "timestamp") {
    return std::nullopt;
  }
  if (step1 != nullptr) {
    return parent1 == nullptr ? std::nullopt
                              : std::optional(valueText(*step1->node->type,
                                                        step1->node->row->find(*parent1, nullptr)));
  }
  // What has no source of its name is taken from the key of the VRF, or from the record.
  if (way1_.size() > kVrf) {
    return keyText(*way1_[kVrf].node, way1_[kVrf].keyPlace());
  }
  return served_->record == nullptr
             ? std::nullopt
             : std::optional(Kel::textOf(served_->record->trafficInspection()));
}

void Explainer::stamp() {
  if (object2_ == nullptr || way2_.size() <= kVrf || !way2_[kVrf].node->isObject()) {
    return;
  }
  const void* const time = valueOf(*object2_, "timestamp");
  const void* const cookie = machine_ == nullptr ? nullptr : valueOf(*machine_, "cookie");
  const void* const updated = cookie == nullptr ? nullptr : valueOf(*asObject(cookie), "updated");
  const bool pending = updated != nullptr && *static_cast<const bool*>(updated);
  const Kel::Seconds seconds = *static_cast<const Kel::Seconds*>(time);
  const bool stamped = !Kel::isNoTime(seconds);
  if (stamped) {
    explanation_.written = seconds;
  }
  explanation_.steps.push_back(
      {"timestamp", "", "", stamped,
       concat({stamped ? concat({"stamped last at ", Kel::textOf(seconds)}) : "never stamped",
               pending
                   ? "; what has changed since then is stamped with the next signal of version 1"
                   : ""})});
}

void Explainer::conclude() {
  Explanation& all = explanation_;
  if (all.missing.empty() && way2_.size() < levels_) {
    all.missing = concat({"version 2 has no ", way1_.back().node->name, ": it is not translated"});
  }
  all.inVersion2 = way2_.size() == levels_ && found2_ == levels_;
  if (!all.inVersion2) {
    const bool proposed = isProposal_ && !all.remedy.empty();
    all.verdict = concat({"is not in version 2: ", all.missing,
                          proposed ? "; the name in the remedy is a proposal" : ""});
  } else if (all.missing.empty()) {
    const std::string serves =
        concat({"the monitor's record \"", Kel::textOf(served_->record->deviceName()),
                "\" serves the device"});
    all.verdict =
        concat({"is in version 2: version 1 has it, and ", because_.empty() ? serves : because_});
  } else {
    const bool isForeign = way1_.size() <= kVrf && levels_ > kVrf && way2_[kVrf].key != nullptr;
    const bool outlives = lackedIn1_ != nullptr && lackedIn1_->kind == Node::Kind::presence;
    all.verdict =
        concat({"is in version 2, but ", all.missing,
                isForeign  ? "; it is foreign, and goes when the tree is cleaned up and initialized"
                : outlives ? " any more; that of version 2 outlives it until its origin goes"
                           : ""});
    if (lackedIn1_ != nullptr) {
      all.remedy.clear();  // nobody has to be given what version 2 should rather lose
    }
  }
}

}  // namespace Host
