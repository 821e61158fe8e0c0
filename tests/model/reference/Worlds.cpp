#include "model/reference/Worlds.h"

#include "model/reference/Run.h"

namespace Reference {
namespace {

using Verb = Operation::Verb;

Operation make(Verb verb, Place at, int id = 0, Text key = {}, Text value = {}) {
  Operation operation;
  operation.verb = verb;
  operation.at = std::move(at);
  operation.id = id;
  operation.key = std::move(key);
  operation.value = std::move(value);
  operation.create = verb == Verb::put;
  return operation;
}

Place place(From from, std::vector<std::pair<int, Text>> steps = {}) {
  return Place{.from = from, .slot = 0, .steps = std::move(steps), .type = ""};
}

// One device, two VRFs, two network VRF names, one rule or interface each.
std::vector<Operation> policyOperations() {
  const Place record = place(From::status, {{257, "fw1"}});
  const Place red = place(From::policyV1, {{258, "fw1"}, {259, "red"}});
  const Place rule = place(From::policyV1, {{258, "fw1"}, {259, "red"}, {259, "20000"}});
  Place match = rule;
  match.steps.emplace_back(261, "web");
  match.steps.emplace_back(263, "");
  const Place netRule = place(From::policyV2, {{258, "fw1"}, {259, "net-1"}, {259, "20000"}});
  return {make(Verb::put, match, 260, "10.0.0.0/8"),
          make(Verb::erase, match, 260, "10.0.0.0/8"),
          make(Verb::erase, rule, 261, "web"),
          make(Verb::erase, red, 259, "20000"),
          make(Verb::put, place(From::policyV1, {{258, "fw1"}, {259, "blue"}}), 259, "10000"),
          make(Verb::erase, place(From::policyV1, {{258, "fw1"}}), 259, "red"),
          make(Verb::erase, place(From::policyV1), 258, "fw1"),
          make(Verb::name, record, 259, "red", "net-1"),
          make(Verb::name, record, 259, "red", "net-2"),
          make(Verb::name, record, 259, "blue", "net-1"),
          make(Verb::erase, record, 259, "red"),
          make(Verb::write, red, 261, {}, "1.000000"),
          make(Verb::erase, netRule, 261, "web"),
          make(Verb::notify, red, 259, "20000"),
          make(Verb::suspend, place(From::policyRoot)),
          make(Verb::resume, place(From::policyRoot))};
}

std::vector<Operation> serviceOperations() {
  const Place record = place(From::status, {{257, "fw1"}});
  const Place red = place(From::serviceV1, {{258, "fw1"}, {259, "red"}});
  const Place intf = place(From::serviceV1, {{258, "fw1"}, {259, "red"}, {259, "10.0.0.1"}});
  return {make(Verb::put, intf, 259, "10.0.0.0/8"),
          make(Verb::erase, intf, 259, "10.0.0.0/8"),
          make(Verb::erase, red, 259, "10.0.0.1"),
          make(Verb::put, place(From::serviceV1, {{258, "fw1"}, {259, "blue"}}), 259, "10.0.0.1"),
          make(Verb::erase, place(From::serviceV1, {{258, "fw1"}}), 259, "red"),
          make(Verb::erase, place(From::serviceV1), 258, "fw1"),
          make(Verb::name, record, 259, "red", "net-1"),
          make(Verb::name, record, 259, "red", "net-2"),
          make(Verb::name, record, 259, "blue", "net-1"),
          make(Verb::erase, record, 259, "red"),
          make(Verb::write, record, 260, {}, "unified"),
          make(Verb::write, red, 260, {}, "1.000000"),
          make(Verb::erase, place(From::serviceV2, {{258, "fw1"}}), 259, "net-1"),
          make(Verb::erase, place(From::status), 257, "fw1"),
          make(Verb::notify, place(From::serviceV1), 258, "fw1"),
          make(Verb::call, place(From::serviceRoot), 0, {}, "handleInitialized()")};
}

}  // namespace

WorldsOutcome everyHistory(bool policy, std::size_t depth, std::size_t part, std::size_t parts) {
  const std::vector<Operation> choices = policy ? policyOperations() : serviceOperations();
  const Place record = place(From::status, {{257, "fw1"}});
  // A world begins translated, with one VRF that has something in it.
  const std::vector<Operation> beginning = {
      make(Verb::put, place(From::status), 257, "fw1"),
      make(Verb::name, record, 259, "red", "net-1"), choices[0],
      make(Verb::start, place(policy ? From::policyRoot : From::serviceRoot))};
  std::size_t all = 1;
  for (std::size_t level = 0; level != depth; ++level) {
    all *= choices.size();
  }
  WorldsOutcome outcome;
  for (std::size_t number = part; number < all; number += parts) {
    std::vector<Operation> history = beginning;
    for (std::size_t level = 0, rest = number; level != depth; ++level) {
      history.push_back(choices[rest % choices.size()]);
      rest /= choices.size();
    }
    const Outcome done = run(history, Seen{}, history.size());
    ++outcome.histories;
    outcome.operations += done.operations;
    if (!done.difference.empty()) {
      outcome.difference = done.difference;
      outcome.history = std::move(history);
      break;
    }
  }
  return outcome;
}

}  // namespace Reference
