#pragma once

#include <simdjson.h>

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/DataPath.h"
#include "host/Receiver.h"
#include "host/ScalarText.h"
#include "host/SyntaxCheck.h"

namespace Host {

/// One walk over one document, hand in hand with the schema: the inside of DocumentReader. Where
/// the parser stumbles, simdjson::simdjson_error comes out.
class DocumentWalk {
 public:
  DocumentWalk(std::string_view text, Receiver& receiver, std::size_t mostFaults,
               std::atomic<std::size_t>* done)
      : text_(text), receiver_(&receiver), mostFaults_(mostFaults), done_(done) {}

  void document(simdjson::ondemand::document& document);
  std::vector<Fault>& faults() { return faults_; }

 private:
  using Value = simdjson::ondemand::value;
  using Object = simdjson::ondemand::object;
  using Array = simdjson::ondemand::array;

  /// The members of one object that have been met, by their position in the schema.
  using Seen = std::uint64_t;

  void value(const Node& node, Value value);
  void members(const Node& node, Object object);
  void list(const Node& node, Array array);
  void entry(const Node& list, Value value, void* key);
  void leafListEntry(const Node& list, Value value, void* place);
  void record(const Node& list, Value value, void* place);
  void pair(const Node& mapping, Value value, void* key, void* place);
  template <class PlaceOf>
  std::optional<Seen> leaves(const Node& node, Value value, PlaceOf placeOf);
  bool leaf(const Node& node, Value value, void* place);
  bool readKey(const Node& list, Object object, std::string_view where, void* key);

  bool is(JsonKind wanted, Value& value);
  bool isFirst(std::size_t index, std::string_view name, Seen& seen);
  JsonScalar scalarOf(Value& value) const;
  std::string_view nameOf(simdjson::simdjson_result<simdjson::ondemand::field>& field) const;
  std::string_view inside(const char* begin) const;
  void fault(std::string_view where, std::string message);
  bool full() const { return faults_.size() >= mostFaults_; }

  const std::string_view text_;
  Receiver* receiver_;  // null: what is read is checked and nothing else
  const std::size_t mostFaults_;
  std::atomic<std::size_t>* const done_;
  ScalarReader scalars_;
  std::vector<Step> steps_;  // from the top to where the walk is
  std::vector<Fault> faults_;
};

}  // namespace Host
