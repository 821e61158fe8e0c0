#include "session/Answers.h"

#include "audit/Difference.h"
#include "data/TreeWriter.h"
#include "text/Reply.h"

namespace Host {

void Answers::error(std::size_t line, std::string_view message) {
  wrong_ = true;
  Reply(sink_, line).error(message);
}

void Answers::answer(std::size_t line, const Change::Show& show) {
  Reply reply(sink_, line);
  members(reply.json(), show);
  reply.end();
}

void Answers::end() {
  JsonWriter json(sink_, Layout::compact);
  json.openObject();
  json.name("line");
  json.text("end");
  Change::Show show;
  show.v2 = show.status = true;
  members(json, show);
  json.closeObject();
  json.endLine();
}

void Answers::members(JsonWriter& json, const Change::Show& show) {
  if (show.v2) {
    containers(json, "v2", "vela-l3v2");
  }
  if (show.status) {
    containers(json, "status", "vela-policy-monitor");
  }
  if (show.audit) {
    audit(json);
  }
  if (show.stats) {
    writeStatistics(json, session_.statistics());
  }
}

void Answers::audit(JsonWriter& json) {
  json.name("audit");
  wrong_ = writeDifferences(json, session_.audit()) || wrong_;
}

void Answers::containers(JsonWriter& json, std::string_view member, std::string_view module) {
  json.name(member);
  json.openObject();
  for (const Node* const top : Schema::instance().tops()) {
    if (top->module == module) {
      TreeWriter(json).container(*top, trees_);
    }
  }
  json.closeObject();
}

}  // namespace Host
