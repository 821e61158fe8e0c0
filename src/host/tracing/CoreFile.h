#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

/// The memory of a process as a core file has it: what the kernel, gcore or gdb's
/// generate-core-file writes.
class CoreFile {
 public:
  /// Raises TraceError when it cannot be read, or is no core of a 64-bit process.
  explicit CoreFile(const std::string& path);
  CoreFile(const CoreFile&) = delete;
  CoreFile& operator=(const CoreFile&) = delete;
  ~CoreFile();

  /// What there is of each piece of memory, from its first byte on; its beginning is that of a
  /// page.
  const std::vector<std::string_view>& areas() const { return areas_; }
  /// The files that the process had mapped, whether or not their content is in an area.
  const std::vector<std::string>& mappedFiles() const { return mappedFiles_; }
  /// How many bytes the file lacks; 0: it is whole.
  std::uint64_t missing() const { return missing_; }

 private:
  void readNotes(std::string_view notes);
  void readMappedFiles(std::string_view description);
  /// As much of it as there is.
  std::string_view part(std::uint64_t offset, std::uint64_t size);

  std::string_view bytes_;
  std::vector<std::string_view> areas_;
  std::vector<std::string> mappedFiles_;
  std::uint64_t missing_ = 0;
};

}  // namespace Host
