#pragma once

#include <deque>
#include <initializer_list>
#include <random>

#include "model/reference/Operation.h"

namespace Reference {

/// Operations at random over a world so small that they meet again and again. The same seed gives
/// the same operations, whatever they meet.
class Generator {
 public:
  /// A calm one only writes version 1 and the records, and redelivers.
  explicit Generator(std::uint64_t seed, bool calm = false);

  /// What is looked at with this seed.
  Seen seen() const { return {.journal = journal_, .binary = binary_}; }
  Operation next();
  /// What a seed ends with: something that ends the process, more often than not; mostly nothing.
  std::vector<Operation> ending();

 private:
  using Verb = Operation::Verb;

  std::size_t below(std::size_t limit) { return random_() % limit; }
  bool oneIn(std::size_t n) { return below(n) == 0; }
  Text one(std::initializer_list<const char*> all) { return all.begin()[below(all.size())]; }

  // Each world has a device that most things happen to, and the first of these.
  std::pair<Text, Text> home() const;  ///< that device and its record
  Text device();
  Text vrf() { return one({"red", "red", "red", "blue", "green"}); }
  Text priority();
  Text origin() { return one({"web", "web", "dns"}); }
  Text address() { return one({"10.0.0.1", "10.0.0.1", "10.0.0.2", "2001:db8::1"}); }
  Text prefix();
  Text range();
  Text criterion(int id);
  Text modifier() { return one({"symmetric", "stateless"}); }
  Text netVrf() { return one({"net-1", "net-2", "net-3", "net-1", "net-2", "net-3", ""}); }
  Text netVrfOf(const Text& vrfName);
  Text recordName();
  Text seconds() { return std::to_string(below(3)) + ".000000"; }

  Operation plain();
  Operation anything(int depth);
  Operation policyChange();
  Operation serviceChange();
  Operation recordChange();
  Operation redelivery();
  Operation tampering();
  Operation machineChange();
  Operation machineCall(Operation operation, std::size_t level);
  Operation handlerCall(Operation operation, std::size_t level);
  Operation rootChange();
  Operation entryAt(bool policy, Place place, std::size_t level);
  Operation changeAt(bool policy, Place place, std::size_t level);
  void episode();
  void missedChanges(bool policy, const Place& entity, const Place& machine);
  void replacement(bool policy, Place entity);
  void removal(bool policy, const Place& entity, const Place& machine);
  void renaming(bool policy);
  void uninitialized(bool policy);
  void interplay(bool policy, std::size_t level);
  Operation homeName();
  std::vector<Operation> deadly(const Operation& origin, const Operation& vrfEntry);
  Operation keeping();
  Operation observing(int depth);
  Operation deletion(const Operation& observer);

  Place policyPlace(From from, std::size_t depth);
  Place servicePlace(From from, std::size_t depth);
  Place machinePlace(bool policy, std::size_t depth);
  Operation toPolicyLeaf(Operation operation, bool generation1);
  Operation structure(Place place, int id, Text key);

  std::mt19937_64 random_;
  std::deque<Operation> pending_;  // what comes next
  std::size_t home_;               // the device that most things happen to
  bool calm_;
  bool journal_;
  bool tampers_;
  bool silences_;
  bool calls_;
  bool observes_;
  bool keeps_;
  bool policyOnly_;
  bool outOfRange_;
  bool raises_;
  bool loses_;
  bool binary_;
  bool ends_;
};

}  // namespace Reference
