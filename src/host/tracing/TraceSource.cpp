#include "tracing/TraceSource.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "text/Concat.h"
#include "tracing/TraceCore.h"
#include "tracing/TraceError.h"
#include "tracing/TraceFolder.h"

namespace Host {

std::unique_ptr<TraceSource> TraceSource::at(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (!fs::exists(fs::status(path, error))) {
    throw TraceError(concat({path, ": cannot be read: ", error.message()}));
  }
  std::array<char, 4> first{};
  std::ifstream(path, std::ios::binary).read(first.data(), first.size());
  if (std::string_view(first.data(), first.size()) ==
      "\x7f"
      "ELF") {
    return std::make_unique<TraceCore>(path);
  }
  auto folder = std::make_unique<TraceFolder>(path);
  if (!fs::exists(fs::status(folder->metadataName(), error))) {
    throw TraceError(concat({path, ": this is no trace, as there is no ", folder->metadataName(),
                             "; expected the folder of --trace-file, a segment in it, or a core "
                             "file"}));
  }
  return folder;
}

}  // namespace Host
