#include <CLI/CLI.hpp>

#include "command/CommandTable.h"
#include "command/Commands.h"
#include "command/HelpTexts.h"
#include "tracing/ShowTrace.h"
#include "tracing/TraceScope.h"

namespace Host {
namespace {

void addFilters(CLI::App& command, TraceFilter& filter, TraceSubject& subject) {
  const auto levels = [&filter](const std::string& text) {
    std::string why;
    Kel::TextTrace::parseLevels(text, filter.levels, why);
    return why;
  };
  const auto time = [](Kel::Seconds& to) {
    return [&to](const std::string& text) {
      std::string why;
      Kel::parseValue(text, to, why);
      return why;
    };
  };
  command.add_option("--level", "only these: 6 decisions, 7 exits, 8 entries")
      ->check(levels)
      ->type_name("LEVELS");
  command.add_option("--class", filter.classes, "only this class; may be repeated")
      ->allow_extra_args(false)
      ->type_name("NAME");
  command.add_option("--handler", subject.handler, "only this handler")->type_name("NAME");
  command.add_option("--device", subject.device, "only what this device is about")
      ->type_name("NAME");
  command.add_option("--vrf", subject.vrf, "only this VRF, by its name in version 1")
      ->type_name("NAME");
  command.add_option("--rule", subject.rule, "only the rule with this priority")
      ->check(whyNoRule)
      ->type_name("PRIORITY");
  command.add_option("--from", "not before this printed time")
      ->check(time(filter.from))
      ->type_name("T");
  command.add_option("--to", "not after this printed time")->check(time(filter.to))->type_name("T");
  command.add_option("--grep", filter.text, "only lines with this text in them")->type_name("TEXT");
}

}  // namespace

void addTrace(CommandTable& table) {
  struct Asked : ShowTraceRequest {
    TraceSubject subject;
    bool json = false;
    bool chrome = false;
    bool statistics = false;
  };
  const auto asked = std::make_shared<Asked>();
  CLI::App& command = table.add(
      "trace", "print a binary trace, as the text trace would have been", kTraceHelp,
      [asked](const RunOptions& options, const Console& console) {
        asked->form = asked->chrome ? TraceForm::chrome
                      : asked->statistics
                          ? (asked->json ? TraceForm::jsonStatistics : TraceForm::statistics)
                      : asked->json ? TraceForm::json
                                    : TraceForm::lines;
        asked->filter.scope = scopeOf(asked->subject);
        return showTrace(*asked, options.color, console);
      });
  command
      .add_option("TRACE", asked->path,
                  "the folder of --trace-file, one segment in it, or a core file")
      ->required()
      ->type_name("FILE");
  addFilters(command, asked->filter, asked->subject);
  CLI::Option* const last =
      command.add_option("--last", asked->last, "only the last lines")->type_name("N");
  CLI::Option* const follow =
      command.add_flag("-f,--follow", asked->follow, "go on with what is written, until Ctrl-C");
  command.add_flag("--exit-at-end", asked->exitAtEnd, "or until the process that writes has ended")
      ->needs(follow);
  command.add_flag("--json", asked->json, "one JSON object per line");
  CLI::Option* const statistics = command.add_flag(
      "--stats", asked->statistics, "how many records there are of which line, and what was lost");
  command
      .add_flag("--chrome", asked->chrome,
                "a timeline for chrome://tracing, ui.perfetto.dev and the like")
      ->excludes(follow)
      ->excludes(last)
      ->excludes(statistics);
  statistics->excludes(follow)->excludes(last);
  table.addColorOption(command);
}

}  // namespace Host
