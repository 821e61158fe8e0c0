#include "control/ExplanationText.h"

#include "control/AgentAnswer.h"
#include "text/Concat.h"
#include "text/LineFiller.h"
#include "text/Report.h"

namespace Host {

std::string explanationText(const simdjson::dom::object& explanation) {
  std::string out;
  LineFiller asked(out, 0, 4);
  asked.path(printable(textIn(explanation, "path")));
  asked.end();
  LineFiller verdict(out, 2, 2);
  verdict.words(printable(textIn(explanation, "verdict")));
  verdict.end();
  out += '\n';
  for (const auto each : arrayIn(explanation, "steps")) {
    const simdjson::dom::object step = each.get_object();
    LineFiller line(out, 2, 6);
    line.word(boolIn(step, "found") ? "[x]" : "[ ]");
    const std::string_view key = textIn(step, "key");
    line.words(printable(
        concat({textIn(step, "level"), key.empty() ? "" : " ", key, ": ", textIn(step, "text")})));
    line.end();
  }
  const simdjson::dom::object remedy = objectIn(explanation, "remedy");
  if (remedy.size() != 0) {
    out += concat({"\n  This change line helps:\n", simdjson::minify(remedy), "\n"});
  }
  return out;
}

}  // namespace Host
