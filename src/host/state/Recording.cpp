#include "state/Recording.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "change/ChangeWriter.h"
#include "text/Concat.h"

namespace Host {

Recording::Recording(const std::string& file, Failed failed)
    : file_(file), failed_(std::move(failed)) {
  struct stat about {};
  if (::stat(file.c_str(), &about) == 0 && S_ISREG(about.st_mode)) {
    std::rename(file.c_str(), concat({file, "~"}).c_str());
  }
  descriptor_ = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (descriptor_ < 0) {
    throw OutputError(concat({file, ": cannot be created: ", std::strerror(errno)}));
  }
}

Recording::~Recording() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

std::optional<std::string> Recording::enter(const Change& change, Kel::Seconds time) {
  if (descriptor_ < 0) {
    return std::nullopt;
  }
  line_.clear();
  JsonWriter json(line_, Layout::compact);
  ChangeWriter(json).lineApplied(change, time);
  try {
    DescriptorSink(descriptor_, file_).write(line_.text());
  } catch (const OutputError& error) {
    ::close(std::exchange(descriptor_, -1));
    failed_(error.what());
  }
  return std::nullopt;
}

}  // namespace Host
