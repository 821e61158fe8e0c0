#pragma once

#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Host {

/// Tells the people behind the agent what happens, each thing in one line.
class Diary {
 public:
  explicit Diary(std::ostream& err) : err_(err) {}

  void say(std::initializer_list<std::string_view> parts);
  /// For what is more than one line.
  std::ostream& stream() { return err_; }

 private:
  std::ostream& err_;
};

/// "1 document", "2 documents".
std::string counted(std::size_t count, std::string_view what);

}  // namespace Host
