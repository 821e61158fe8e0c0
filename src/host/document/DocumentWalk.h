#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/Content.h"
#include "data/DataPath.h"
#include "data/JsonTokens.h"
#include "data/Receiver.h"
#include "data/ScalarText.h"
#include "text/SyntaxCheck.h"

namespace Host {

/// A step of the path, for as long as this lives.
class Within {
 public:
  Within(std::vector<Step>& steps, const Node& node) : steps_(steps) { steps.push_back({&node}); }
  Within(const Within&) = delete;
  Within& operator=(const Within&) = delete;
  ~Within() { steps_.pop_back(); }

 private:
  std::vector<Step>& steps_;
};

/// One walk over one document, hand in hand with the schema: the inside of DocumentReader. Where
/// the parser stumbles, simdjson::simdjson_error comes out.
class DocumentWalk {
 public:
  DocumentWalk(std::string_view text, Receiver& receiver, std::size_t mostFaults,
               Content content = Content::configuration, std::atomic<std::size_t>* done = nullptr)
      : tokens_(text),
        receiver_(&receiver),
        mostFaults_(mostFaults),
        content_(content),
        done_(done) {}

  void document(simdjson::ondemand::document& document);
  /// What is to stand at the end of `path`: the value of a leaf, all of a list, the inside of a
  /// container. Of an entry whose key the path has: its members without the key; only a pair of a
  /// mapping is handed on as such. A key that the value has all the same must be the path's.
  void at(std::span<const Step> path, simdjson::ondemand::value value);

  std::vector<Fault>& faults() { return faults_; }
  /// Whether there was something that was not looked at.
  bool ignored() const { return ignored_; }

 private:
  using Value = simdjson::ondemand::value;
  using Object = simdjson::ondemand::object;
  using Array = simdjson::ondemand::array;

  /// The members of one object that have been met, by their position in the schema.
  using Seen = std::uint64_t;

  void containers(Object object);
  bool isPartOfAnswer(std::string_view name) const;
  void value(const Node& node, Value value);
  void members(const Node& node, Object object);
  void passOver(const Node& flag, std::string_view name, Value value);
  void list(const Node& node, Array array);
  void entry(const Node& list, Value value, void* key);
  void leafListEntry(const Node& list, Value value, void* place);
  void record(const Node& list, Value value, void* place);
  void pair(const Node& mapping, Value value, void* key, void* place);
  void entryAt(const Node& list, Value value, const void* key);
  void recordAt(const Node& list, Value value, const void* key);
  void pairAt(const Node& mapping, Value value, const void* key);
  void leafListEntryAt(const Node& list, Value value, const void* key);
  void agree(const Node& node, std::string_view where, const void* inPath, const void* inValue);
  template <class PlaceOf>
  std::optional<Seen> leaves(const Node& node, Value value, PlaceOf placeOf, bool withKeys);
  bool leaf(const Node& node, Value value, void* place);
  bool readKey(const Node& list, Object object, std::string_view where, void* key);

  bool is(JsonKind wanted, Value& value);
  bool isFirst(std::size_t index, std::string_view name, Seen& seen);
  void fault(std::string_view where, std::string message);
  bool full() const { return faults_.size() >= mostFaults_; }

  const JsonTokens tokens_;
  Receiver* receiver_;  // null: what is read is checked and nothing else
  const std::size_t mostFaults_;
  const Content content_;
  std::atomic<std::size_t>* const done_;
  bool wholeDocument_ = false;  // and not the value of a change
  bool ignored_ = false;
  ScalarReader scalars_;
  std::vector<Step> steps_;  // from the top to where the walk is
  std::vector<Fault> faults_;
};

}  // namespace Host
