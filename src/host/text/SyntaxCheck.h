#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Host {

/// Something wrong at one place of a document.
struct Fault {
  std::size_t offset;  ///< in bytes from the start of the text
  std::size_t length;  ///< how many bytes are meant; 0: a place between two
  std::string message;
  std::string path;  ///< of the data node; empty where there is none
};

/// The first place at which `text` is not JSON (RFC 8259) in UTF-8; none when it is. `what` the
/// text is called in messages: a document, or a line.
///
/// The parser that reads documents is fast and says little of what is wrong with them. Where it
/// stumbles, this slow and exact look at the text finds the words. It needs no recursion, so that
/// the depth of nesting does not matter.
std::optional<Fault> findSyntaxFault(std::string_view text, std::string_view what = "document");

}  // namespace Host
