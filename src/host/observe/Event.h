#pragma once

#include <cstdint>
#include <string_view>

namespace Host {

class JsonWriter;

/// Something that has changed in what the library writes: version 2 and the convergence flags.
///
/// What is added or removed are list entries, entries of leaf-lists and presence containers; the
/// removal of an entry stands for all that was below it. What is set are leaves.
struct Event {
  enum class Kind : std::uint8_t { add, remove, set };

  Kind kind;
  std::string_view path;
  std::string_view value = {};  ///< of what is set: as RFC 7951 JSON
};

/// The members "event", "path" and, where there is one, "value" of an open object.
void writeMembers(JsonWriter& json, const Event& event);

/// Is told of changes, in the order in which they happen, while they happen: it must neither change
/// anything, nor begin or end to watch, nor raise anything.
class EventReceiver {
 public:
  EventReceiver() = default;
  EventReceiver(const EventReceiver&) = delete;
  EventReceiver& operator=(const EventReceiver&) = delete;
  virtual ~EventReceiver() = default;

  /// The texts of the event are valid during the call only.
  virtual void event(const Event& event) = 0;
};

}  // namespace Host
