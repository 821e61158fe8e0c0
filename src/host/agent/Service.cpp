#include "agent/Service.h"

#include <unistd.h>

#include <fstream>

#include "audit/Difference.h"
#include "data/TreeWriter.h"
#include "explain/Explainer.h"
#include "session/Answers.h"
#include "session/EntityStatistics.h"
#include "session/HandlerStatistics.h"
#include "text/Concat.h"
#include "text/Report.h"

namespace Host {
namespace {

constexpr std::string_view kRealClock =
    "\"time\" is for a replay; the clock of an agent is the real one";

std::size_t residentBytes() {
  std::size_t all = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace

void Service::line(Client& from, std::size_t number, std::string_view line) {
  ++lines_;
  if (!requests_.isRequest(line)) {
    return change(from, number, line);
  }
  Request read;
  const std::vector<Fault> faults = requests_.read(line, read);
  if (!faults.empty()) {
    Reply(from.output(), number).error(inLine(line, faults.front()));
  } else {
    request(from, number, read);
  }
}

void Service::change(Client& from, std::size_t number, std::string_view line) {
  OutputQueue& out = from.output();
  Change change;
  const std::vector<Fault> faults = changes_.read(line, change);
  if (!faults.empty() || change.time) {
    engine_.unreadable();
    Reply(out, number).error(faults.empty() ? kRealClock : inLine(line, faults.front()));
  } else if (const auto error = engine_.apply(change)) {
    Reply(out, number).error(*error);
  } else {
    const std::size_t begin = out.size();
    Answers(out, engine_.trees(), engine_.session()).answer(number, change.show);
    acknowledgements_.add(from, number, begin);
  }
}

void Service::request(Client& from, std::size_t number, const Request& request) {
  if (request.kind == Request::Kind::wait) {
    return waits_.add(from, number, request);
  }
  if (request.kind == Request::Kind::watch) {
    return watches_.add(from, number, request);
  }
  if (request.kind == Request::Kind::tryOut && !request.change->time) {
    return trials_.add(from, number, *request.change);
  }
  if (request.kind == Request::Kind::reload) {
    return reload(from, number);
  }
  Reply reply(from.output(), number);
  switch (request.kind) {
    case Request::Kind::show:
      show(reply, request);
      break;
    case Request::Kind::audit:
      reply.json().name("audit");
      writeDifferences(reply.json(), engine_.session().audit());
      break;
    case Request::Kind::explain:
      if (const std::string why = Explainer::whyNot(*request.path); !why.empty()) {
        return reply.error(why);
      }
      reply.json().name("explain");
      write(reply.json(),
            Explainer(engine_.trees(), engine_.session().translation(), engine_.session().history())
                .explain(*request.path));
      break;
    case Request::Kind::tryOut:
      return reply.error(kRealClock);
    case Request::Kind::stats:
      statistics(reply.json());
      break;
    case Request::Kind::trace:
      return trace(reply, request);
    case Request::Kind::stop:
      reply.json().name("stopping");
      reply.json().boolean(true);
      stopping_ = true;
      break;
    case Request::Kind::watch:
    case Request::Kind::wait:
    case Request::Kind::reload:
      return;  // answered in their own time, see above
  }
  reply.end();
}

void Service::show(Reply& reply, const Request& request) {
  JsonWriter& json = reply.json();
  json.name("data");
  json.openObject();
  if (request.path) {
    TreeWriter(json).at(*request.path, engine_.trees());
  } else {
    for (const Node* const top : Schema::instance().tops()) {
      if ((request.v1 && top->module == "vela-l3") || (request.v2 && top->module == "vela-l3v2") ||
          (request.status && top->module == "vela-policy-monitor")) {
        TreeWriter(json).container(*top, engine_.trees());
      }
    }
  }
  json.closeObject();
}

void Service::trace(Reply& reply, const Request& request) {
  const std::string why =
      trace_.change({request.levels, request.device, request.vrf, request.rule, request.handler});
  if (!why.empty()) {
    return reply.error(why);
  }
  trace_.write(reply.json());
  reply.end();
}

void Service::statistics(JsonWriter& json) {
  using std::chrono::seconds;
  const auto up = std::chrono::steady_clock::now() - started_;
  json.name("stats");
  json.openObject();
  writeStatisticsMembers(json, engine_.session().statistics());
  writeEntityStatistics(json);
  writeHandlerStatistics(json);
  json.name("uptime");
  json.number(static_cast<std::uint64_t>(std::chrono::duration_cast<seconds>(up).count()));
  json.name("clients");
  json.number(clients_.size());
  json.name("watches");
  json.number(watches_.size());
  json.name("lines");
  json.number(lines_);
  json.name("waiting-input");
  json.number(clients_.waitingInput());
  json.name("waiting-output");
  json.number(clients_.waitingOutput());
  json.name("resident");
  json.number(residentBytes());
  json.closeObject();
}

void Service::reload(Client& from, std::size_t number) {
  const std::size_t begin = from.output().size();
  const Documents::Outcome outcome = documents_.readAgain(engine_);
  Reply reply(from.output(), number);
  if (!outcome.error.empty()) {
    return reply.error(outcome.error);
  }
  reply.json().name("changes");
  reply.json().number(outcome.differing);
  reply.end();
  acknowledgements_.add(from, number, begin);
}

}  // namespace Host
