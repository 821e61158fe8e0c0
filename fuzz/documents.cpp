// Documents: whatever is read without a fault is printed as a document that reads as the same, and
// whatever is refused is refused at places inside the text.

#include <algorithm>

#include "Input.h"
#include "data/EntityFiller.h"
#include "data/TreeWriter.h"
#include "document/DocumentReader.h"

namespace {

std::vector<Host::Fault> readInto(const Host::Trees& trees, const Host::SourceText& source) {
  Host::EntityFiller filler(trees);
  return Host::DocumentReader(20, Host::Content::everything).read(source, filler);
}

std::string printed(const Host::Trees& trees) {
  Host::TextSink sink;
  Host::JsonWriter json(sink, Host::Layout::pretty);
  json.openObject();
  for (const Host::Node* const top : Host::Schema::instance().tops()) {
    Host::TreeWriter(json).container(*top, trees);
  }
  json.closeObject();
  json.endLine();
  return sink.text();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Without the byte-order mark, where there is one.
  const Host::SourceText source("input", Fuzz::textOf(data, size));
  const std::string_view text = source.text();
  const Host::Trees trees;
  const auto faults = readInto(trees, source);
  for (const Host::Fault& fault : faults) {
    Fuzz::require(fault.offset <= text.size(), "a fault is inside the text");
    Fuzz::require(!fault.message.empty(), "a fault says what is wrong");
  }
  Fuzz::require(std::ranges::is_sorted(faults, {}, &Host::Fault::offset),
                "faults stand in the order of their places");
  Fuzz::require(!faults.empty() || !Host::findSyntaxFault(text), "what is read is JSON");
  if (faults.empty()) {
    const std::string first = printed(trees);
    const Host::Trees again;
    Fuzz::require(readInto(again, Host::SourceText("printed", first)).empty(),
                  "what is printed can be read");
    Fuzz::require(printed(again) == first, "what is printed and read is the same");
  }
  return 0;
}
