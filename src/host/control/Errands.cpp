#include "control/Errands.h"

#include <algorithm>
#include <vector>

#include "control/AgentAnswer.h"
#include "control/JsonCopy.h"
#include "control/RequestLine.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/LineFiller.h"
#include "text/Report.h"

namespace Host {
namespace {

using simdjson::dom::element;
using simdjson::dom::object;

void printJson(const Console& console, const object& value) {
  JsonWriter json(console.out, Layout::pretty);
  copyObject(json, value);
}

/// A row of a table of two columns, the first of which is `width` wide.
void appendRow(std::string& out, std::size_t width, std::string_view left, std::string_view right) {
  LineFiller line(out, 0, width);
  line.words(left);
  line.tab(width);
  line.words(right);
  line.end();
}

/// What the audit knows of this device, each reason once.
std::vector<std::string_view> reasonsFor(std::string_view device, const object& audit) {
  const std::string key = concat({"[device-name='", device, "']"});
  std::vector<std::string_view> reasons;
  for (const element each : arrayIn(audit, "differences")) {
    const object difference = each.get_object();
    const std::string_view why = textIn(difference, "why");
    if (textIn(difference, "path").find(key) != std::string_view::npos &&
        std::ranges::find(reasons, why) == reasons.end()) {
      reasons.push_back(why);
    }
  }
  return reasons;
}

/// Which of a device's trees have not converged.
std::string_view notConverged(const object& device) {
  // A tree that does not have the device says nothing.
  const auto isLate = [&](std::string_view tree) {
    bool converged = true;
    return device[tree].get(converged) == simdjson::SUCCESS && !converged;
  };
  const bool policies = isLate("policy");
  const bool vrfs = isLate("service-device");
  return policies && vrfs ? "its policies and its VRFs have not converged"
         : policies       ? "its policies have not converged"
         : vrfs           ? "its VRFs have not converged"
                          : "version 1 does not have this device";
}

}  // namespace

int auditAgent(const ControlOptions& request, const RunOptions& /*options*/,
               const Console& console) {
  Requests agent(request.socket);
  const object audit = objectIn(agent.ask(RequestLine("audit").done()).members, "audit");
  bool alarming = false;
  constexpr std::size_t kWidth = 13;  // of "as designed" and a gap
  std::string out;
  for (const element each : arrayIn(audit, "differences")) {
    const object difference = each.get_object();
    const std::string_view kind = textIn(difference, "class");
    alarming = alarming || kind == "foreign" || kind == "defect";
    if (out.empty()) {
      out = concat({"CLASS        PATH\n", std::string(kWidth, ' '), "WHY\n"});
    }
    LineFiller line(out, 0, kWidth);
    line.words(kind);
    line.tab(kWidth);
    line.path(printable(textIn(difference, "path")));
    line.end();
    LineFiller why(out, kWidth, kWidth);
    why.words(printable(textIn(difference, "why")));
    why.end();
  }
  if (request.json) {
    printJson(console, audit);
  } else {
    console.out.write(out.empty() ? "version 2 is what version 1 says\n" : out);
  }
  return alarming ? kDifferent : kDone;
}

int traceScope(const TraceRequest& request, const RunOptions& /*options*/, const Console& console) {
  RequestLine line("trace");
  for (const auto& [name, text] : {std::pair{"levels", &request.levels},
                                   {"device", &request.device},
                                   {"vrf", &request.vrf},
                                   {"rule", &request.rule},
                                   {"handler", &request.handler}}) {
    if (*text) {
      line.member(name, **text);
    }
  }
  Requests agent(request.socket);
  const object trace = objectIn(agent.ask(line.done()).members, "trace");
  if (request.json) {
    printJson(console, trace);
    return kDone;
  }
  std::string out;
  for (const auto& [name, value] : trace) {
    std::string_view text;
    const bool all = value.get(text) == simdjson::SUCCESS && text.empty();
    appendRow(
        out, 9, name,
        all ? "all"
            : printable(value.is_string() ? text : std::string_view(simdjson::minify(value))));
  }
  console.out.write(out);
  return kDone;
}

int waitConverged(const WaitRequest& request, const RunOptions& /*options*/,
                  const Console& console) {
  RequestLine line("wait");
  line.optional("device", request.device);
  std::string timeout;
  Kel::appendValue(timeout, request.timeout);
  line.json.name("timeout");
  line.json.spelled(timeout);
  Requests agent(request.socket);
  const object answer = agent.ask(line.done()).members;
  const bool converged = boolIn(answer, "converged");
  std::vector<std::pair<std::string, std::string>> late;  // the next question voids the answer
  for (const element each : arrayIn(answer, "devices")) {
    const object device = each.get_object();
    late.emplace_back(textIn(device, "device"), notConverged(device));
  }
  if (request.json) {
    JsonWriter json(console.out, Layout::pretty);
    json.openObject();
    for (const auto& [name, value] : answer) {
      if (name != "line") {
        json.name(name);
        copyJson(json, value);
      }
    }
    json.closeObject();
    json.endLine();
  } else if (!late.empty()) {
    const object audit = objectIn(agent.ask(RequestLine("audit").done()).members, "audit");
    std::string out;
    for (const auto& [device, what] : late) {
      LineFiller text(out, 0, 2);
      text.words(concat({printable(device), ":"}));
      text.words(what);
      text.end();
      for (const std::string_view why : reasonsFor(device, audit)) {
        LineFiller reason(out, 2, 4);
        reason.words(printable(why));
        reason.end();
      }
    }
    console.out.write(out);
  }
  return converged ? kDone : kDifferent;
}

int reload(const ControlOptions& request, const RunOptions& /*options*/, const Console& console) {
  Requests agent(request.socket);
  const object answer = agent.ask(RequestLine("reload").done()).members;
  const std::uint64_t changes = numberIn(answer, "changes");
  console.out.write(request.json
                        ? concat({"{\"changes\": ", std::to_string(changes), "}\n"})
                        : concat({"documents that differed: ", std::to_string(changes), "\n"}));
  return kDone;
}

int stop(const ControlOptions& request, const RunOptions& /*options*/, const Console& /*console*/) {
  Requests(request.socket).ask(RequestLine("stop").done());
  return kDone;
}

}  // namespace Host
