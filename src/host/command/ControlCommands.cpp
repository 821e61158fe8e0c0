// The commands that talk to a running agent.

#include <CLI/CLI.hpp>

#include "command/CommandTable.h"
#include "command/Commands.h"
#include "command/ControlHelpTexts.h"
#include "control/AgentAnswer.h"
#include "control/Apply.h"
#include "control/Errands.h"
#include "control/Explain.h"
#include "control/Show.h"
#include "control/Stats.h"
#include "control/Watch.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/Report.h"

namespace Host {
namespace {

void addSocket(CLI::App& command, std::string& socket) {
  command.add_option("--socket", socket, "where the agent listens (default: see vpm ctl --help)")
      ->type_name("SOCKET");
}

/// The commands of "vpm ctl".
class ControlCommands {
 public:
  explicit ControlCommands(CommandTable& table)
      : table_(table),
        group_(table.addGroup("ctl", "ask a running agent, and change what it holds", kCtlHelp)) {
    addSocket(group_, *socket_);
  }

  /// A command that runs `action` on a request of the type that it takes. What it is asked for is
  /// kept beside it, to be bound to options.
  template <class Request>
  struct Added {
    CLI::App& command;
    std::shared_ptr<Request> request;
  };
  template <class Request>
  Added<Request> add(const char* name, const char* about, const char* help,
                     int (*action)(const Request&, const RunOptions&, const Console&)) {
    const auto request = std::make_shared<Request>();
    CLI::App& command =
        table_.add(group_, name, about, help,
                   [request, action, socket = socket_](const auto& options, const auto& console) {
                     request->socket = *socket;
                     try {
                       return action(*request, options, console);
                     } catch (const Refusal& refusal) {
                       Report(console.err, options.color).problem("vpm", refusal.what());
                       return static_cast<int>(kDifferent);
                     }
                   });
    addSocket(command, *socket_);
    table_.addColorOption(command);
    return {command, request};
  }

 private:
  CommandTable& table_;
  CLI::App& group_;
  std::shared_ptr<std::string> socket_ = std::make_shared<std::string>();
};

void addJson(CLI::App& command, ControlOptions& request, const char* about) {
  command.add_flag("--json", request.json, about);
}

void addPath(CLI::App& command, std::string& path, const char* about) {
  command.add_option("PATH", path, about);
}

void addShow(ControlCommands& commands) {
  const auto [command, request] =
      commands.add("show", "print what the agent holds, as a tree", kCtlShowHelp, show);
  addPath(command, request->path, "what is at or below this, of any of the three");
  command.add_flag("--v1", request->v1, "version 1")->excludes("PATH");
  command.add_flag("--v2", request->v2, "version 2 (default)")->excludes("PATH");
  command.add_flag("--status", request->status, "the monitor's records")->excludes("PATH");
  addJson(command, *request, "print the document as JSON (RFC 7951)");
}

void addApply(ControlCommands& commands) {
  const auto [command, request] =
      commands.add("apply", "send change lines to the agent", kCtlApplyHelp, apply);
  command.add_option("FILE", request->log, "change lines (default: standard input)")
      ->type_name("FILE");
  command.add_flag("--dry-run", request->dryRun, "say what each line would change; change nothing");
  addJson(command, *request, "with --dry-run: one JSON object per line");
}

void addWatch(ControlCommands& commands) {
  const auto [command, request] = commands.add(
      "watch", "print each change of version 2 and of the flags", kCtlWatchHelp, watch);
  addPath(command, request->path, "only what is at or below this (default: all)");
  addJson(command, *request, "one JSON object per change");
}

void addAuditAgent(ControlCommands& commands) {
  const auto [command, request] = commands.add(
      "audit", "say where version 1 and version 2 differ, and why", kCtlAuditHelp, auditAgent);
  addJson(command, *request, "print JSON, as vpm audit does");
}

void addExplainAgent(ControlCommands& commands) {
  const auto [command, request] = commands.add(
      "explain", "say why something is, or is not, in version 2", kCtlExplainHelp, explainAgent);
  command.add_option("PATH", request->path, "what to explain, in either version")->required();
  addJson(command, *request, "print JSON");
}

/// What is wrong with a text that should say trace levels; empty when nothing is.
std::string whyNoLevels(const std::string& text) {
  std::string why;
  Kel::TextTrace::Levels levels = 0;
  Kel::TextTrace::parseLevels(text, levels, why);
  return why;
}

void addTraceScope(ControlCommands& commands) {
  const auto [command, request] =
      commands.add("trace", "say or set what the agent traces", kCtlTraceHelp, traceScope);
  const auto asked = request;
  command.add_option("--levels", asked->levels, "6 decisions, 7 exits, 8 entries; or none")
      ->check(whyNoLevels)
      ->type_name("LEVELS");
  command.add_option("--device", asked->device, "only lines of this device")->type_name("D");
  command.add_option("--vrf", asked->vrf, "only lines of this VRF")->type_name("V");
  command.add_option("--rule", asked->rule, "only lines of this rule")->type_name("PRIORITY");
  command.add_option("--handler", asked->handler, "only lines of this handler")->type_name("H");
  command.add_flag_callback(
      "--all", [asked] { asked->device = asked->vrf = asked->rule = asked->handler = ""; },
      "lines of every device, VRF, rule and handler");
  addJson(command, *request, "print JSON");
}

void addStats(ControlCommands& commands) {
  const auto [command, request] =
      commands.add("stats", "print what the agent has done and holds", kCtlStatsHelp, stats);
  CLI::Option* const prometheus = command.add_flag("--prometheus", request->prometheus,
                                                   "print the text that Prometheus collects");
  addJson(command, *request, "print JSON");
  prometheus->excludes("--json");
}

/// What is wrong with a text that should say how long to wait; empty when nothing is.
std::string whyNoTimeout(const std::string& text) {
  std::string why;
  Kel::Seconds seconds = 0;
  const bool time = Kel::parseValue(text, seconds, why);
  return time && seconds < 0 ? concat({text, " is before now; expected 0 or more"}) : why;
}

void addWait(ControlCommands& commands) {
  const auto [command, request] =
      commands.add("wait", "wait until version 2 has converged", kCtlWaitHelp, waitConverged);
  command.add_flag("--converged")
      ->description("until the convergence flags are set (the only thing to wait for)");
  command.add_option("DEVICE", request->device, "only this device (default: all)");
  request->timeout = 60;
  command
      .add_option("--timeout", request->timeout, "give up after this many seconds (default: 60)")
      ->check(whyNoTimeout)
      ->type_name("S");
  addJson(command, *request, "print JSON");
}

}  // namespace

void addCtl(CommandTable& table) {
  ControlCommands commands(table);
  addShow(commands);
  addApply(commands);
  addWatch(commands);
  addAuditAgent(commands);
  addExplainAgent(commands);
  addTraceScope(commands);
  addStats(commands);
  addWait(commands);
  const auto again =
      commands.add("reload", "let the agent read its documents again", kCtlReloadHelp, reload);
  addJson(again.command, *again.request, "print JSON");
  commands.add("stop", "end the agent", kCtlStopHelp, stop);
}

}  // namespace Host
