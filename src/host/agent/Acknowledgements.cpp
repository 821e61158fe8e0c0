#include "agent/Acknowledgements.h"

#include <ranges>

#include "text/Reply.h"

namespace Host {

void Acknowledgements::takeBack(std::string_view why) {
  // From the last to the first, so that the places of those before stay what they are.
  for (const Answer& answer : std::views::reverse(all_)) {
    TextSink error;
    Reply(error, answer.number).error(why);
    answer.client->output().replace(answer.begin, answer.end, error.text());
  }
  all_.clear();
}

}  // namespace Host
