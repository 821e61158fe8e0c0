#include "agent/Diary.h"

#include <ostream>

#include "text/Concat.h"
#include "text/Report.h"

namespace Host {

void Diary::say(std::initializer_list<std::string_view> parts) {
  err_ << "vpm: " << printable(concat(parts)) << '\n' << std::flush;
}

std::string counted(std::size_t count, std::string_view what) {
  return concat({std::to_string(count), " ", what, count == 1 ? "" : "s"});
}

}  // namespace Host
