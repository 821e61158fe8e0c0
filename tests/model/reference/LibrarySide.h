#pragma once

#include <array>
#include <deque>
#include <map>
#include <memory>

#include "Kel/Kel.h"
#include "Kel/TextTrace.h"
#include "model/reference/BinaryTrace.h"
#include "model/reference/Operation.h"

namespace Reference {

using ObjectPtr = Brix::Ptr<Kel::PtrInterface>;

/// A world of the library, and what an operation does to it, through what an agent has.
class LibrarySide {
 public:
  explicit LibrarySide(const Seen& seen);
  LibrarySide(const LibrarySide&) = delete;
  LibrarySide& operator=(const LibrarySide&) = delete;
  ~LibrarySide();

  /// Never raises: what an operation raises is a line of the log.
  void apply(const Operation& operation);
  /// Ends observers, roots and whatever is held.
  void close();
  /// All trace lines so far, those that the sink has lost among them; with Seen::binary only.
  const Text& traced() const { return traced_; }
  /// As traced(), from the binary trace.
  Text binaryTraced() const { return binary_->lines(); }
  /// How many trace lines the sink has lost.
  long lost() const { return static_cast<long>(Kel::TextTrace::linesLost() - lostBefore_); }
  /// Whether a journal is kept of this entity.
  bool journals(const Kel::PtrInterface& entity) const { return recorders_.contains(&entity); }

  Text log;
  double time = 0;
  std::deque<bool> refusals;      ///< whether each who is to raise Refused does so, in order
  std::array<ObjectPtr, 5> tops;  ///< by From
  std::array<ObjectPtr, 2> roots;
  std::array<ObjectPtr, kSlots> kept;
  std::array<ObjectPtr, kSlots> held;

 private:
  struct Observer;
  struct Listener;
  struct Recorder;

  ObjectPtr node(const Place& place, bool create);
  ObjectPtr machine(const Place& place);
  void toNode(const Operation& operation);
  void toMachine(const Operation& operation);
  void toRoot(const Operation& operation);
  void record(const Kel::PtrInterface& entity);
  void refuse();

  int losing_ = 0;
  Text traced_;
  std::unique_ptr<BinaryTrace> binary_;
  std::shared_ptr<Kel::TextTrace::Sink> sinkBefore_;
  const std::uint64_t lostBefore_ = Kel::TextTrace::linesLost();
  std::array<std::shared_ptr<Observer>, kSlots> observers_;
  std::array<std::shared_ptr<Listener>, kSlots> listeners_;
  std::map<const Kel::PtrInterface*, std::unique_ptr<Recorder>> recorders_;
};

/// A value of the type that is printed as `text`. Ends the process when it is not.
const void* typed(const Kel::ValueType& type, const Text& text);
/// The printed form of a value; empty for a time that was never written.
void appendText(Text& out, const Kel::ValueType& type, const void* value);

/// Calls an operation of a machine by its form; nothing when it has none of that form.
void callMachine(Kel::PtrInterface& machine, const Text& form, const Text& argument);
/// Operations on children and attributes, as Operation tells them.
void changeMachine(Kel::PtrInterface& machine, const Operation& operation);

}  // namespace Reference
