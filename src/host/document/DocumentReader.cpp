#include "document/DocumentReader.h"

#include <algorithm>

#include "document/DocumentWalk.h"
#include "text/Concat.h"

namespace Host {

static_assert(SourceText::kPadding >= simdjson::SIMDJSON_PADDING);

std::vector<Fault> DocumentReader::read(const SourceText& source, Receiver& receiver,
                                        std::atomic<std::size_t>* done) const {
  const std::string_view text = source.text();
  DocumentWalk walk(text, receiver, most_, content_, done);
  std::string stumbled;
  try {
    simdjson::ondemand::parser parser;
    simdjson::ondemand::document document;
    const simdjson::padded_string_view padded(text.data(), text.size(),
                                              text.size() + SourceText::kPadding);
    if (const auto error = parser.iterate(padded).get(document)) {
      throw simdjson::simdjson_error(error);
    }
    walk.document(document);
  } catch (const simdjson::simdjson_error& error) {
    stumbled = error.what();
  }

  std::vector<Fault> faults = std::move(walk.faults());
  if (faults.empty() && stumbled.empty() && !walk.ignored()) {
    return faults;
  }
  if (auto syntax = findSyntaxFault(text)) {
    std::erase_if(faults, [&](const Fault& fault) {
      return fault.offset >= syntax->offset || fault.offset + fault.length > syntax->offset;
    });
    faults.push_back(std::move(*syntax));
  } else if (!stumbled.empty()) {
    // Sound JSON that the parser cannot take, such as a document above 4 GB.
    faults.push_back({0, 0, concat({"the document cannot be read: ", stumbled}), {}});
  }
  std::ranges::stable_sort(faults, {}, &Fault::offset);
  return faults;
}

}  // namespace Host
