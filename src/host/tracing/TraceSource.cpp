#include "tracing/TraceSource.h"

#include <array>
#include <fstream>
#include <string_view>

#include "tracing/TraceCore.h"
#include "tracing/TraceFolder.h"

namespace Host {

std::unique_ptr<TraceSource> TraceSource::at(const std::string& path) {
  std::array<char, 4> first{};
  std::ifstream(path, std::ios::binary).read(first.data(), first.size());
  if (std::string_view(first.data(), first.size()) ==
      "\x7f"
      "ELF") {
    return std::make_unique<TraceCore>(path);
  }
  return std::make_unique<TraceFolder>(path);
}

}  // namespace Host
