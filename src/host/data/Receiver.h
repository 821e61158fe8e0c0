#pragma once

#include "data/Schema.h"

namespace Host {

/// Takes what a reader finds in a data tree, from the top down and in the order of the text.
///
/// Values and keys are valid during the call only, unless it says otherwise.
class Receiver {
 public:
  Receiver() = default;
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;
  virtual ~Receiver() = default;

  /// A container or a presence container begins; `close` follows.
  virtual void open(const Node& container) = 0;
  /// A list or leaf-list begins: each entry that follows for `list` has to be another one.
  virtual void openList(const Node& list) = 0;
  /// An entry of a list of entities begins; `close` follows. False: the list has had this key, and
  /// no `close` follows. The key stays valid until then.
  virtual bool openEntry(const Node& list, const void* key) = 0;
  virtual void close() = 0;

  virtual void leaf(const Node& leaf, const void* value) = 0;
  /// An entry of a leaf-list or of a list of records. False: the list has had it.
  virtual bool member(const Node& list, const void* key) = 0;
  /// A pair of a mapping; null for a value that was not given. False: the list has had this key.
  virtual bool pair(const Node& mapping, const void* key, const void* value) = 0;
};

}  // namespace Host
