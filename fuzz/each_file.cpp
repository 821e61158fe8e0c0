// Runs a target on every file of the folders that are named: the corpus, as a test that needs no
// fuzzer.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Input.h"

int main(int count, char** arguments) {
  std::size_t files = 0;
  for (int i = 1; i < count; ++i) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(arguments[i])) {
      if (!entry.is_regular_file()) {
        continue;
      }
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
      std::printf("%s\n", entry.path().c_str());
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++files;
    }
  }
  std::printf("%zu files\n", files);
  return files == 0 ? 1 : 0;
}
