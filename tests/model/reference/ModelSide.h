#pragma once

#include <array>

#include "model/reference/Machine.h"
#include "model/reference/Operation.h"

namespace Reference {

/// A world of the reference model, and what an operation does to it.
class ModelSide {
 public:
  explicit ModelSide(bool journal);
  ModelSide(const ModelSide&) = delete;
  ModelSide& operator=(const ModelSide&) = delete;
  ~ModelSide();

  /// Never raises: what an operation raises is a line of the log.
  void apply(const Operation& operation);
  /// Whether there is what the operation is about.
  bool fits(const Operation& operation);
  /// Ends observers, roots and whatever is held.
  void close();

  World world;
  std::array<NodePtr, 5> tops;  ///< by From
  std::array<MachinePtr, 2> roots;
  std::array<NodePtr, kSlots> kept;
  std::array<MachinePtr, kSlots> held;

 private:
  using Verb = Operation::Verb;

  struct Observer;
  struct Listener;

  NodePtr node(const Place& place, bool create);
  MachinePtr machine(const Place& place);
  void toNode(const Operation& operation);
  void toMachine(const Operation& operation);
  void toRoot(const Operation& operation);
  void listen(const Operation& operation);

  std::array<std::shared_ptr<Observer>, kSlots> observers_;
  std::array<std::shared_ptr<Listener>, kSlots> listeners_;
};

}  // namespace Reference
