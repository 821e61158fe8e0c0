#include "text/OutputFile.h"

#include <fcntl.h>
#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): mkostemp and realpath are not in <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace Host {
namespace {

/// What `path` leads to, as far as it exists.
std::string followed(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real == nullptr ? path : std::string(real.get());
}

/// The permissions that a new file gets.
mode_t newFileMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : path_(path), target_(followed(path)) {
  struct stat about {};
  const bool exists = ::stat(target_.c_str(), &about) == 0;
  if (exists && !S_ISREG(about.st_mode)) {
    descriptor_ = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor_ < 0) {
      fail("cannot be written");
    }
    return;
  }
  temporary_ = target_ + ".XXXXXX";
  descriptor_ = ::mkostemp(temporary_.data(), O_CLOEXEC);
  if (descriptor_ < 0) {
    temporary_.clear();
    fail("cannot be created");
  }
  ::fchmod(descriptor_, exists ? about.st_mode & 0777 : newFileMode());
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
  if (!temporary_.empty()) {
    ::unlink(temporary_.c_str());
  }
}

void OutputFile::write(std::string_view bytes) { DescriptorSink(descriptor_, path_).write(bytes); }

void OutputFile::commit() {
  const int closed = ::close(std::exchange(descriptor_, -1));
  if (closed != 0 ||
      (!temporary_.empty() && std::rename(temporary_.c_str(), target_.c_str()) != 0)) {
    fail("cannot be written");
  }
  temporary_.clear();
}

void OutputFile::fail(const char* what) const {
  throw OutputError(path_ + ": " + what + ": " + std::strerror(errno));
}

}  // namespace Host
