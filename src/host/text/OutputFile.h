#pragma once

#include <memory>
#include <string>

#include "text/ByteSink.h"

namespace Host {

/// A file that appears whole or not at all.
///
/// It is written under a temporary name in the same folder and takes its own name upon `commit`;
/// without one it goes away. A symbolic link stays a link: the file it leads to is replaced. What
/// is no plain file (a device, a pipe) is written directly.
class OutputFile : public ByteSink {
 public:
  /// Raises OutputError when the file cannot be created.
  explicit OutputFile(const std::string& path);
  ~OutputFile() override;

  void write(std::string_view bytes) override;
  /// Raises OutputError.
  void commit();

 private:
  [[noreturn]] void fail(const char* what) const;

  std::string path_;       // as given, for messages
  std::string target_;     // where links lead
  std::string temporary_;  // empty: written directly, or committed
  int descriptor_ = -1;
};

}  // namespace Host
