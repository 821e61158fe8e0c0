// Paths: what is read is printed as a path that reads as the same.

#include "Input.h"
#include "change/PathReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Fuzz::textOf(data, size);
  Host::PathReader reader(Host::Content::everything);
  Host::TreePath path;
  if (!reader.read(text, path)) {
    Fuzz::require(reader.offset() <= text.size(), "a fault is inside the path");
    Fuzz::require(!reader.why().empty(), "a fault says what is wrong");
    return 0;
  }
  const std::string printed = pathOf(stepsOf(path));
  Host::TreePath again;
  Fuzz::require(reader.read(printed, again), "what is printed can be read");
  Fuzz::require(pathOf(stepsOf(again)) == printed, "what is printed and read is the same");
  return 0;
}
