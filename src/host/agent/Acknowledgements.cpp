#include "agent/Acknowledgements.h"

#include "text/Reply.h"

namespace Host {

void Acknowledgements::takeBack(std::string_view why) {
  // From the last to the first, so that the places of those before stay what they are.
  while (!all_.empty()) {
    const Answer answer = all_.back();
    all_.pop_back();
    TextSink error;
    Reply(error, answer.number).error(why);
    answer.client->output().replace(answer.begin, answer.end, error.text());
  }
}

}  // namespace Host
