#include "state/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "state/Checksum.h"
#include "text/Concat.h"

namespace Host {
namespace {

[[noreturn]] void fail(const std::string& file, const char* what) {
  throw OutputError(concat({file, ": cannot be ", what, ": ", std::strerror(errno)}));
}

}  // namespace

Files& Files::ofTheSystem() {
  static Files files;
  return files;
}

int Files::open(const std::string& file) {
  const int descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    fail(file, "opened");
  }
  return descriptor;
}

void Files::write(int descriptor, const std::string& file, std::string_view bytes) {
  DescriptorSink(descriptor, file).write(bytes);
}

void Files::sync(int descriptor, const std::string& file) {
  if (::fdatasync(descriptor) != 0) {
    fail(file, "put on disk");
  }
}

void Files::cut(int descriptor, const std::string& file, std::size_t size) {
  if (::ftruncate(descriptor, static_cast<off_t>(size)) != 0) {
    fail(file, "shortened");
  }
}

void Files::makeFolder(const std::string& folder) {
  if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
    fail(folder, "created");
  }
}

void Files::syncFolder(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const bool synced = descriptor >= 0 && ::fsync(descriptor) == 0;
  const int error = errno;
  if (descriptor >= 0) {
    ::close(descriptor);
  }
  if (!synced) {
    errno = error;
    fail(folder, "put on disk");
  }
}

void Files::rename(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0) {
    fail(from, "renamed");
  }
}

void Files::remove(const std::string& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  if (error) {
    throw OutputError(concat({path, ": cannot be removed: ", error.message()}));
  }
}

NewFile::NewFile(Files& files, std::string file) : files_(files), file_(std::move(file)) {
  files_.remove(file_);  // a crash may have left one
  descriptor_ = files_.open(file_);
}

NewFile::~NewFile() { ::close(descriptor_); }

void NewFile::write(std::string_view bytes) {
  files_.write(descriptor_, file_, bytes);
  size_ += bytes.size();
  checksum_ = Host::checksum(bytes, checksum_);
}

}  // namespace Host
