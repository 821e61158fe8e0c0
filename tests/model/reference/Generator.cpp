#include "model/reference/Generator.h"

namespace Reference {

namespace {

constexpr const char* kDevices[] = {"fw1", "fw2", "fwA\\:fwB_HAPair",
                                    "fwA\\:fwB_HAPair:x\\:y:z:more"};
constexpr const char* kRecords[][2] = {
    {"fw1", "fw1"}, {"fw2", "fw2"}, {"fwA::", "fwB::"}, {"fwA:x\\:y:z", "fwB:x\\:y:z"}};

}  // namespace

// What a seed does besides plain changes is drawn once, so that some worlds are calm and some wild.
Generator::Generator(std::uint64_t seed, bool calm)
    : random_(seed),
      home_(below(4)),
      calm_(calm),
      journal_(oneIn(2)),
      tampers_(!calm && oneIn(2)),
      silences_(!calm && oneIn(2)),
      calls_(!calm && oneIn(2)),
      observes_(!calm && below(5) < 3),
      keeps_(!calm && oneIn(2)),
      policyOnly_(!calm && oneIn(4)),
      outOfRange_(!calm && oneIn(3)),
      raises_(!calm && oneIn(3)),
      loses_(!calm && oneIn(8)),
      binary_(!calm && oneIn(16)),
      ends_(!calm && oneIn(8)) {
  // A world begins with its roots, and with something to translate.
  for (const From root : {From::policyRoot, From::serviceRoot}) {
    Operation start;
    start.verb = Verb::start;
    start.at.from = root;
    if (root == From::policyRoot || !policyOnly_) {
      pending_.push_back(start);
    }
  }
  for (const char* const vrfName : {"red", "blue"}) {
    Operation name;
    name.verb = Verb::name;
    name.at =
        Place{.from = From::status,
              .slot = 0,
              .steps = {{257, one({kRecords[home_][0], kRecords[home_][0], kRecords[home_][1]})}},
              .type = ""};
    name.id = 259;
    name.key = vrfName;
    name.value = netVrfOf(vrfName);
    name.create = true;
    pending_.push_back(name);
  }
}

Operation Generator::next() {
  if (!pending_.empty()) {
    Operation operation = std::move(pending_.front());
    pending_.pop_front();
    return operation;
  }
  return anything(0);
}

Operation Generator::anything(int depth) {
  const std::size_t draw = below(100);
  if (tampers_ && draw < 6) {
    return tampering();
  }
  if (calls_ && draw >= 6 && draw < 14) {
    return machineChange();
  }
  if (keeps_ && draw >= 14 && draw < 16) {
    return keeping();
  }
  if (observes_ && depth == 0 && draw >= 16 && draw < 22) {
    return observing(depth);
  }
  if (draw >= 23 && draw < 36 && (calls_ || silences_) && depth == 0) {
    episode();
    return next();
  }
  if (loses_ && draw == 36) {
    Operation operation;
    operation.verb = Verb::lose;
    operation.times = 1 + static_cast<int>(below(3));
    return operation;
  }
  if (draw == 22 && !calm_ && oneIn(3)) {
    return rootChange();
  }
  return plain();
}

Operation Generator::plain() {
  const std::size_t draw = below(100);
  if (draw < 50) {
    return policyChange();
  }
  if (draw < 72) {
    return serviceChange();
  }
  return draw < 92 ? recordChange() : redelivery();
}

std::pair<Text, Text> Generator::home() const { return {kDevices[home_], kRecords[home_][0]}; }

// --- Names ------------------------------------------------------------------------------------

Text Generator::device() { return kDevices[oneIn(4) ? below(4) : home_]; }

// In a calm world two VRFs rarely share a name.
Text Generator::netVrfOf(const Text& vrfName) {
  return calm_ && !oneIn(20) ? one({"net-", "network-"}) + vrfName : netVrf();
}

Text Generator::recordName() {
  return oneIn(20) ? Text("fwA\\:fwB_HAPair")
                   : Text(kRecords[oneIn(4) ? below(4) : home_][below(2)]);
}

Text Generator::priority() {
  return outOfRange_ && oneIn(40) ? one({"9999", "30001", "40000"})
                                  : one({"20000", "20000", "20000", "10000", "10001", "30000"});
}

Text Generator::prefix() {
  return one({"10.0.0.0/8", "10.0.0.0/8", "10.0.0.0/8", "10.1.0.0/16", "2001:db8::/32"});
}

Text Generator::range() {
  return one({" IP range: 10.1.0.1-10.1.0.9", " IP range: 10.1.0.1-10.1.0.9",
              " IP range: 10.1.0.1-10.1.0.9", " IP range: 10.1.0.9-10.1.0.1",
              " IP range: 2001:db8::1-2001:db8::9"});
}

Text Generator::criterion(int id) {
  switch (id) {
    case 258:
    case 260:
      return prefix();
    case 259:
    case 261:
      return range();
    case 262:
      return one({"6", "6", "6", "17", "0", "255"});
    case 263:
    case 265:
      return one({"443/6", "443/6", "443/6", "53/17", "0/0"});
    default:
      return one({"8000-8080/6", "8000-8080/6", "8000-8080/6", "1-65535/17", "9-1/255"});
  }
}

// --- Places -----------------------------------------------------------------------------------

Place Generator::policyPlace(From from, std::size_t depth) {
  const bool generation1 = from == From::policyV1;
  Place place{.from = from, .slot = 0, .steps = {}, .type = ""};
  const std::pair<int, Text> steps[] = {{258, device()},
                                        {259, generation1 ? vrf() : netVrf()},
                                        {259, priority()},
                                        {261, origin()},
                                        {263, ""}};
  place.steps.assign(steps, steps + depth);
  // Most things happen in one place, so that they meet.
  if (!oneIn(3)) {
    const Text home[] = {kDevices[home_], generation1 ? "red" : netVrf(), "20000", "web", ""};
    for (std::size_t at = 0; at != depth; ++at) {
      place.steps[at].second = home[at];
    }
  }
  return place;
}

Place Generator::servicePlace(From from, std::size_t depth) {
  Place place{.from = from, .slot = 0, .steps = {}, .type = ""};
  const std::pair<int, Text> steps[] = {
      {258, device()}, {259, from == From::serviceV1 ? vrf() : netVrf()}, {259, address()}};
  place.steps.assign(steps, steps + depth);
  if (!oneIn(3)) {
    const Text home[] = {kDevices[home_], from == From::serviceV1 ? "red" : netVrf(), "10.0.0.1"};
    for (std::size_t at = 0; at != depth; ++at) {
      place.steps[at].second = home[at];
    }
  }
  return place;
}

Place Generator::machinePlace(bool policy, std::size_t depth) {
  Place place = policy ? policyPlace(From::policyV1, depth) : servicePlace(From::serviceV1, depth);
  place.from = policy ? From::policyRoot : From::serviceRoot;
  if (policy && depth == 5) {
    place.steps.back().second = "match";
  }
  if (keeps_ && oneIn(8)) {
    place = Place{.from = From::held, .slot = below(kSlots), .steps = {}, .type = ""};
  }
  return place;
}

// --- Changes ----------------------------------------------------------------------------------

// Something is created, deleted, or all of it is.
Operation Generator::structure(Place place, int id, Text key) {
  Operation operation;
  operation.at = std::move(place);
  operation.id = id;
  operation.key = std::move(key);
  // What is high up is left alone mostly, so that something grows below.
  const std::size_t draw = below(operation.at.steps.size() < 2 ? 24 : 12);
  operation.verb = draw == 0 ? Verb::clear : draw < 6 ? Verb::erase : Verb::put;
  operation.create = operation.verb == Verb::put && !oneIn(4);
  return operation;
}

Operation Generator::toPolicyLeaf(Operation operation, bool generation1) {
  operation.create = generation1 && !oneIn(3);
  operation.verb = Verb::write;
  operation.id = 259;
  switch (below(generation1 ? 8 : 6)) {
    case 0:
      operation.value = one({"", "a", "b c"});
      break;
    case 1:
      operation.id = 264;
      operation.value = one({"forward", "drop", "redirect"});
      break;
    case 2:
      operation.id = 265;
      operation.value = one({"false", "true"});
      break;
    case 3:
    case 4: {
      const bool create = operation.create;
      operation = structure(std::move(operation.at), 261, modifier());
      operation.create = operation.verb == Verb::put && create;
      break;
    }
    case 5: {
      const bool create = operation.create;
      operation = structure(std::move(operation.at), 263, "");
      operation.create = operation.verb == Verb::put && create;
      break;
    }
    default:
      operation.id = oneIn(2) ? 260 : 262;
      operation.value = one({"", "somebody"});
      break;
  }
  return operation;
}

// An entry or a member of what an entity of version 1 holds.
Operation Generator::entryAt(bool policy, Place place, std::size_t level) {
  Operation operation;
  operation.at = std::move(place);
  operation.create = true;
  if (policy && level == 5) {
    operation.id = std::initializer_list<int>{258, 259, 260, 261, 262, 265, 266}.begin()[below(7)];
    operation.key = criterion(operation.id);
    return operation;
  }
  if (policy && level == 4 && oneIn(3)) {
    operation.id = 263;
    return operation;
  }
  const Text keys[] = {device(), vrf(), policy ? priority() : address(),
                       policy ? origin() : prefix(), modifier()};
  operation.id = level == 0 ? 258 : policy && level > 2 ? 261 : 259;
  operation.key = keys[level];
  return operation;
}

// A change of what an entity of version 1 holds.
Operation Generator::changeAt(bool policy, Place place, std::size_t level) {
  if (policy && level == 5) {
    const int id = 258 + static_cast<int>(below(9));
    return structure(std::move(place), id, criterion(id));
  }
  if (policy && level == 4) {
    Operation operation;
    operation.at = std::move(place);
    return toPolicyLeaf(std::move(operation), true);
  }
  Operation operation = entryAt(policy, std::move(place), level);
  return structure(std::move(operation.at), operation.id, std::move(operation.key));
}

Operation Generator::policyChange() {
  const std::size_t draw = below(20);
  if (draw >= 11 && draw < 14) {
    Operation operation;
    operation.at = policyPlace(From::policyV1, 2);
    operation.verb = Verb::write;
    operation.id = 261;
    operation.value = seconds();
    return operation;
  }
  const std::size_t level = draw < 7    ? 5
                            : draw < 11 ? 4
                            : draw < 15 ? 0
                            : draw < 16 ? 1
                            : draw < 18 ? 2
                                        : 3;
  return changeAt(true, policyPlace(From::policyV1, level), level);
}

Operation Generator::serviceChange() {
  const std::size_t draw = below(20);
  if (draw >= 8 && draw < 11) {
    Operation operation;
    operation.at = servicePlace(From::serviceV1, 2);
    operation.verb = Verb::write;
    operation.id = 260;
    operation.value = seconds();
    return operation;
  }
  const std::size_t level = draw < 8 ? 3 : draw < 13 ? 0 : draw < 15 ? 1 : 2;
  return changeAt(false, servicePlace(From::serviceV1, level), level);
}

Operation Generator::recordChange() {
  Operation operation;
  operation.at.from = From::status;
  const std::size_t draw = below(20);
  if (draw < 3) {
    return structure(operation.at, 257, recordName());
  }
  operation.at.steps.emplace_back(257, recordName());
  operation.create = !oneIn(4);
  if (draw < 6) {
    operation.verb = Verb::write;
    operation.id = 260;
    operation.value = one({"", "local", "unified", "local unified"});
    return operation;
  }
  if (draw < 7) {
    operation.verb = Verb::write;
    operation.id = oneIn(2) ? 257 : 258;
    operation.value = one({"false", "true"});
    return operation;
  }
  operation.id = 259;
  operation.key = vrf();
  if (policyOnly_ && oneIn(30)) {
    operation.key = Text(101, 'v');
  }
  operation.value = netVrfOf(operation.key);
  operation.verb = draw < 16 ? Verb::name : draw < 19 ? Verb::erase : Verb::clear;
  return operation;
}

// A notification without a change, of something that is there or is not.
Operation Generator::redelivery() {
  Operation operation;
  switch (below(4)) {
    case 0:
      operation = serviceChange();
      break;
    case 1:
      operation = recordChange();
      break;
    default:
      operation = policyChange();
      break;
  }
  operation.verb = Verb::notify;
  operation.create = false;
  return operation;
}

// Version 2 changed by somebody else.
Operation Generator::tampering() {
  if (oneIn(3)) {
    switch (below(4)) {
      case 0:
        return structure(servicePlace(From::serviceV2, 0), 258, device());
      case 1:
        return structure(servicePlace(From::serviceV2, 1), 259, netVrf());
      case 2:
        return structure(servicePlace(From::serviceV2, 2), 259, address());
      default:
        return structure(servicePlace(From::serviceV2, 3), 259, prefix());
    }
  }
  switch (below(7)) {
    case 0:
      return structure(policyPlace(From::policyV2, 0), 258, device());
    case 1:
      return structure(policyPlace(From::policyV2, 1), 259, netVrf());
    case 2:
      return structure(policyPlace(From::policyV2, 2), 259, priority());
    case 3:
      return structure(policyPlace(From::policyV2, 3), 261, origin());
    case 4: {
      const int id = 258 + static_cast<int>(below(5));
      return structure(policyPlace(From::policyV2, 5), id, criterion(id));
    }
    default: {
      Operation operation;
      operation.at = policyPlace(From::policyV2, 4);
      return toPolicyLeaf(std::move(operation), false);
    }
  }
}

}  // namespace Reference
