// The commands that work on documents and logs, without an agent.

#include <CLI/CLI.hpp>

#include "command/AuditDocuments.h"
#include "command/CommandTable.h"
#include "command/Commands.h"
#include "command/ExplainDocuments.h"
#include "command/HelpTexts.h"
#include "command/Replay.h"
#include "command/Translate.h"

namespace Host {

void addTranslate(CommandTable& table) {
  struct Asked {
    std::vector<std::string> documents;
    Kel::Seconds time = 0;
  };
  const auto asked = std::make_shared<Asked>();
  CLI::App& command = table.add("translate", "print version 2 of what version-1 documents say",
                                kTranslateHelp, [asked](const auto& options, const auto& console) {
                                  return translate(asked->documents, asked->time, options, console);
                                });
  command.add_option("DOC", asked->documents, "documents to merge; - is standard input")
      ->required()
      ->type_name("FILE");
  table.addTime(command, asked->time, "what the clock shows, in seconds (default: 0)");
  table.addRunOptions(command);
}

void addReplay(CommandTable& table) {
  struct Asked : ReplayRequest {
    bool noStart = false;
  };
  const auto asked = std::make_shared<Asked>();
  CLI::App& command = table.add("replay", "apply a change log, with a clock of its own, and answer",
                                kReplayHelp, [asked](const auto& options, const auto& console) {
                                  asked->start = !asked->noStart;
                                  return replay(*asked, options, console);
                                });
  command.add_option("LOG", asked->log, "change lines (default: standard input)")
      ->type_name("FILE");
  command.add_option("--config", asked->configs, "load this document first; may be repeated")
      ->allow_extra_args(false)
      ->type_name("DOC");
  command.add_option("--v2", asked->leftOver, "version 2 as an earlier run printed it")
      ->type_name("DOC");
  command.add_option("--record", asked->record, "write what was applied to this file, as a log")
      ->type_name("FILE");
  command.add_flag("--no-start", asked->noStart, "start no tree; the log does");
  table.addTime(command, asked->time, "what the clock shows at first, in seconds (default: 0)");
  table.addRunOptions(command);
}

void addAudit(CommandTable& table) {
  const auto documents = std::make_shared<std::vector<std::string>>();
  CLI::App& command = table.add("audit", "say where version 1 and version 2 differ, and why",
                                kAuditHelp, [documents](const auto& options, const auto& console) {
                                  return auditDocuments(*documents, options, console);
                                });
  command.add_option("DOC", *documents, "documents with both versions and the monitor")
      ->required()
      ->type_name("FILE");
  table.addOutputOptions(command);
}

void addExplain(CommandTable& table) {
  const auto asked = std::make_shared<ExplainDocumentsRequest>();
  CLI::App& command = table.add("explain", "say why something is, or is not, in version 2",
                                kExplainHelp, [asked](const auto& options, const auto& console) {
                                  return asked->configs.empty()
                                             ? explainAgent(*asked, options, console)
                                             : explainDocuments(*asked, options, console);
                                });
  command.add_option("PATH", asked->path, "what to explain, in either version")->required();
  auto* const config =
      command.add_option("--config", asked->configs, "run on this document; may be repeated")
          ->allow_extra_args(false)
          ->type_name("DOC");
  command.add_option("--v2", asked->leftOver, "with --config: version 2 of an earlier run")
      ->needs(config)
      ->type_name("DOC");
  command.add_option("--socket", asked->socket, "ask the agent that listens here (default)")
      ->excludes(config)
      ->type_name("SOCKET");
  command.add_flag("--json", asked->json, "print JSON, for programs");
  table.addColorOption(command);
}

}  // namespace Host
