#include "text/Reply.h"

namespace Host {

Reply::Reply(ByteSink& sink, std::size_t line) : json_(sink, Layout::compact) {
  json_.openObject();
  json_.name("line");
  json_.number(line);
}

void Reply::end() {
  json_.closeObject();
  json_.endLine();
}

void Reply::error(std::string_view message) {
  json_.name("error");
  json_.text(message);
  end();
}

}  // namespace Host
