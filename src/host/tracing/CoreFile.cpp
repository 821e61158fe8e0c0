#include "tracing/CoreFile.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "text/Concat.h"
#include "tracing/TraceError.h"

namespace Host {
namespace {

/// The whole file as memory. Cores are large, and little of one is looked at.
std::string_view mapped(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  struct stat status {};
  void* memory = MAP_FAILED;
  if (file >= 0 && ::fstat(file, &status) == 0) {
    const auto size = static_cast<std::size_t>(status.st_size);
    memory = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
  }
  const int error = errno;
  if (file >= 0) {
    ::close(file);
  }
  if (memory == MAP_FAILED) {
    throw TraceError(concat({path, ": cannot be read: ", std::strerror(error)}));
  }
  return {static_cast<const char*>(memory), static_cast<std::size_t>(status.st_size)};
}

/// The object at the front of `bytes`; zeros behind their end.
template <class T>
T front(std::string_view bytes) {
  T object{};
  std::memcpy(&object, bytes.data(), std::min(bytes.size(), sizeof object));
  return object;
}

std::string_view behind(std::string_view bytes, std::uint64_t size) {
  return bytes.substr(std::min<std::uint64_t>(size, bytes.size()));
}

constexpr std::uint64_t aligned(std::uint64_t size) { return (size + 3U) & ~std::uint64_t{3}; }

}  // namespace

CoreFile::CoreFile(const std::string& path) : bytes_(mapped(path)) {
  const auto header = front<Elf64_Ehdr>(bytes_);
  if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB ||
      header.e_type != ET_CORE) {
    ::munmap(const_cast<char*>(bytes_.data()), bytes_.size());
    throw TraceError(concat({path, ": this is no core file of a 64-bit process"}));
  }
  // Where there are more parts than the header can count, the first section does.
  const std::uint64_t parts = header.e_phnum == PN_XNUM
                                  ? front<Elf64_Shdr>(behind(bytes_, header.e_shoff)).sh_info
                                  : header.e_phnum;
  std::string_view table = part(header.e_phoff, parts * sizeof(Elf64_Phdr));
  for (; !table.empty(); table = behind(table, sizeof(Elf64_Phdr))) {
    const auto entry = front<Elf64_Phdr>(table);
    if (entry.p_type == PT_LOAD) {
      areas_.push_back(part(entry.p_offset, entry.p_filesz));
    } else if (entry.p_type == PT_NOTE) {
      readNotes(part(entry.p_offset, entry.p_filesz));
    }
  }
}

CoreFile::~CoreFile() { ::munmap(const_cast<char*>(bytes_.data()), bytes_.size()); }

std::string_view CoreFile::part(std::uint64_t offset, std::uint64_t size) {
  const std::string_view there = behind(bytes_, offset).substr(0, size);
  missing_ += size - there.size();
  return there;
}

void CoreFile::readNotes(std::string_view notes) {
  while (!notes.empty()) {
    const auto note = front<Elf64_Nhdr>(notes);
    notes = behind(notes, sizeof note);
    notes = behind(notes, aligned(note.n_namesz));
    if (note.n_type == NT_FILE) {
      readMappedFiles(notes.substr(0, note.n_descsz));
    }
    notes = behind(notes, aligned(note.n_descsz));
  }
}

// The number of mappings and the size of a page; begin, end and place in its file of each mapping;
// then the names of the files.
void CoreFile::readMappedFiles(std::string_view description) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  const auto count = front<std::uint64_t>(description);
  std::string_view names = description.size() / (3 * kWord) < count
                               ? std::string_view()
                               : behind(description, (2 + 3 * count) * kWord);
  while (!names.empty()) {
    const std::string_view name = names.substr(0, names.find('\0'));
    mappedFiles_.emplace_back(name);
    names = behind(names, name.size() + 1);
  }
}

}  // namespace Host
