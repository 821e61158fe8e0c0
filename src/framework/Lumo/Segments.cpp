#include "Lumo/Segments.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Lumo/Packet.h"

namespace Lumo {
namespace {

using FileName = std::array<char, 24>;

FileName segmentName(std::size_t index) {
  FileName name{};
  std::snprintf(name.data(), name.size(), "segment-%04u", static_cast<unsigned>(index));
  return name;
}

std::string failure(const std::string& what) { return what + ": " + std::strerror(errno); }

bool checkLimits(std::size_t size, std::size_t count, std::string& why) {
  if (size < Segments::kSmallest || size > Segments::kLargest || size % Segments::kSmallest != 0 ||
      count < Segments::kFewest || count > Segments::kMost) {
    why =
        std::to_string(count) + " trace segments of " + std::to_string(size) +
        " bytes are not possible; expected 2 to 4096 segments of 4096 bytes to 1 GiB, in steps of "
        "4096 bytes";
    return false;
  }
  return true;
}

bool exists(int directory, const char* name) { return faccessat(directory, name, F_OK, 0) == 0; }

// To a name that is free there; one that is not here is well moved.
bool moveFile(int from, int to, const char* name) {
  return renameat(from, name, to, name) == 0 || errno == ENOENT;
}

// A trace that an earlier process left is the evidence of why it ended: it is kept until the next
// trace is left. Only files with a trace's own names are touched.
bool putAside(int directory, const std::string& path, std::string& why) {
  if (!exists(directory, "metadata") && !exists(directory, segmentName(0).data())) {
    return true;
  }
  const std::string aside = path + ".previous";
  if (mkdir(aside.c_str(), 0755) != 0 && errno != EEXIST) {
    why = failure("cannot create " + aside + " for the trace of the previous process");
    return false;
  }
  const int target = open(aside.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (target < 0) {
    why = failure("cannot open " + aside + " for the trace of the previous process");
    return false;
  }
  bool moved = unlinkat(target, "metadata", 0) == 0 || errno == ENOENT;
  for (std::size_t i = 0; moved; ++i) {
    const FileName name = segmentName(i);
    if (exists(directory, name.data())) {
      moved = moveFile(directory, target, name.data());
    } else if (unlinkat(target, name.data(), 0) != 0) {
      break;  // neither here nor there: segments are numbered without gaps
    }
  }
  moved = moved && moveFile(directory, target, "metadata");
  if (!moved) {
    why = failure("cannot move the trace of the previous process from " + path + " to " + aside);
  }
  close(target);
  return moved;
}

}  // namespace

bool replaceFile(int directory, const char* name, std::span<const std::byte> bytes) noexcept {
  // A leading dot: readers of a trace directory skip hidden files.
  std::array<char, 40> aside{};
  std::snprintf(aside.data(), aside.size(), ".%s.new", name);
  const int file = openat(directory, aside.data(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (file < 0) {
    return false;
  }
  bool whole = true;
  while (whole && !bytes.empty()) {
    errno = 0;  // for a file that takes nothing and does not say why
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written > 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(written));
    } else {
      whole = errno == EINTR;
    }
  }
  whole = close(file) == 0 && whole;
  return whole && renameat(directory, aside.data(), directory, name) == 0;
}

bool Segments::openDirectory(const std::string& directory, std::string& why) {
  if (mkdir(directory.c_str(), 0755) != 0 && errno != EEXIST) {
    why = failure("cannot create trace directory " + directory);
    return false;
  }
  directory_ = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory_ < 0) {
    why = failure("cannot open trace directory " + directory);
    return false;
  }
  if (flock(directory_, LOCK_EX | LOCK_NB) != 0) {
    why = errno == EWOULDBLOCK ? "trace directory " + directory +
                                     " is in use by another process; give each its own directory"
                               : failure("cannot lock trace directory " + directory);
    return false;
  }
  return putAside(directory_, directory, why);
}

bool Segments::mapFile(std::size_t index, std::string& why) {
  const FileName name = segmentName(index);
  const int file = openat(directory_, name.data(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (file < 0) {
    why = failure("cannot create trace file " + std::string(name.data()));
    return false;
  }
  // Reserving the space now makes a full disk an error here, not a SIGBUS at some record.
  if (const int error = posix_fallocate(file, 0, static_cast<off_t>(size_)); error != 0) {
    errno = error;
    why =
        failure("cannot reserve " + std::to_string(size_) + " bytes for trace file " + name.data());
    close(file);
    return false;
  }
  const void* const mapped = mmap(at(index), size_, PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_FIXED | MAP_POPULATE, file, 0);
  if (mapped == MAP_FAILED) {
    why = failure("cannot map trace file " + std::string(name.data()) + " into memory");
  }
  close(file);
  return mapped != MAP_FAILED;
}

std::unique_ptr<Segments> Segments::inMemory(std::size_t size, std::size_t count,
                                             std::string& why) {
  if (!checkLimits(size, count, why)) {
    return nullptr;
  }
  std::unique_ptr<Segments> segments(new Segments(size, count));
  void* const memory =
      mmap(nullptr, size * count, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    why = failure("no memory for " + std::to_string(count) + " trace segments of " +
                  std::to_string(size) + " bytes");
    return nullptr;
  }
  segments->memory_ = static_cast<std::byte*>(memory);
  return segments;
}

std::unique_ptr<Segments> Segments::onDisk(const std::string& directory, std::size_t size,
                                           std::size_t count, std::string& why) {
  // The files are mapped over memory without a name, so that segments lie behind one another.
  std::unique_ptr<Segments> segments = inMemory(size, count, why);
  if (segments == nullptr || !segments->openDirectory(directory, why)) {
    return nullptr;
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (!segments->mapFile(i, why)) {
      return nullptr;
    }
  }
  return segments;
}

Segments::~Segments() {
  if (!metadata_.empty()) {
    munmap(metadata_.data(), metadata_.size());
  }
  if (memory_ != nullptr) {
    munmap(memory_, size_ * count_);
  }
  if (directory_ >= 0) {
    close(directory_);
  }
}

bool Segments::publishMetadata(const std::string& text) noexcept {
  return keepMetadata(text) &&
         (directory_ < 0 || replaceFile(directory_, "metadata", std::as_bytes(std::span(text))));
}

bool Segments::keepMetadata(const std::string& text) noexcept {
  const MetadataHeader header{MetadataHeader::kMagic, text.size()};
  const std::size_t size = sizeof header + text.size();
  void* const memory =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    return false;
  }
  // The header last: what it stands before is whole, at whatever instant the process ends.
  std::memcpy(static_cast<std::byte*>(memory) + sizeof header, text.data(), text.size());
  std::atomic_signal_fence(std::memory_order_release);
  std::memcpy(memory, &header, sizeof header);
  std::atomic_signal_fence(std::memory_order_release);
  const std::span before = std::exchange(metadata_, {static_cast<std::byte*>(memory), size});
  if (!before.empty()) {
    munmap(before.data(), before.size());
  }
  return true;
}

}  // namespace Lumo
