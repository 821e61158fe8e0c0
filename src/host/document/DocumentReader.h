#pragma once

#include <atomic>
#include <cstddef>
#include <vector>

#include "data/Content.h"
#include "data/Receiver.h"
#include "text/SourceText.h"
#include "text/SyntaxCheck.h"

namespace Host {

/// Reads a document: RFC 7951 JSON instance data, of version 1 and of the monitor for the most
/// part.
///
/// How a document is read:
///
/// - *The schema leads.* The reader goes down the document and the schema at once, and hands what
/// it
///   finds to a Receiver. It never descends where the schema has nothing below, so the depth of the
///   document does not matter.
///
/// - *A key comes before what it is the key of*, although members have no order: an entry whose
///   first member is not its key is searched for it first, and then read from its start.
///
/// - *All that is wrong is said at once.* After a fault the reader goes on with the next member or
///   entry. What lies in an entry that cannot be made (its key is wrong, or had before) is checked
///   and not handed on.
///
/// - *The parser stumbles, the syntax check speaks.* The parser looks only at what is asked of it,
///   so that after a fault of syntax its further answers are worth nothing. So where there is any
///   fault, the whole text is checked for syntax, and what lies behind the first such fault is
///   dropped.
///
/// - *Text is not copied.* Names and values are views into the document, unless they hold escapes.
class DocumentReader {
 public:
  /// At most this many faults are collected.
  explicit DocumentReader(std::size_t most, Content content = Content::configuration)
      : most_(most), content_(content) {}

  /// The faults in the order of their places; none: `receiver` has been given all.
  /// `done`, if there is one, follows the number of bytes read.
  std::vector<Fault> read(const SourceText& source, Receiver& receiver,
                          std::atomic<std::size_t>* done = nullptr) const;

 private:
  std::size_t most_;
  Content content_;
};

}  // namespace Host
