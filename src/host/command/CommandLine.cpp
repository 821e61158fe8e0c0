#include "command/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>

#include "command/AuditDocuments.h"
#include "command/HelpTexts.h"
#include "command/Replay.h"
#include "command/Translate.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/Report.h"
#include "text/Suggest.h"

namespace Host {
namespace {

/// All that the command line says.
struct Request {
  RunOptions run;
  std::vector<std::string> documents;
  ReplayRequest replay;
  Kel::Seconds time = 0;
  std::string color = "auto";
  bool noStart = false;
  bool progress = false;
  bool quiet = false;
};

void addOutputOptions(CLI::App& command, Request& request) {
  command.add_option("-o,--output", request.run.output, "write to this file, whole or not at all")
      ->type_name("FILE");
  command.add_flag("--progress", request.progress, "show progress (default: on a terminal)");
  command.add_flag("-q,--quiet", request.quiet, "show no progress");
  command.add_option("--color", request.color, "colour messages: auto, always or never")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->type_name("WHEN");
}

void addRunOptions(CLI::App& command, Request& request) {
  const auto levels = [&request](const std::string& text) {
    std::string why;
    Kel::TextTrace::parseLevels(text, request.run.traceLevels, why);
    return why;
  };
  addOutputOptions(command, request);
  command
      .add_option("--trace", request.run.trace, "write the text trace to this file; - is stderr")
      ->type_name("FILE");
  command.add_option("--trace-levels", "6 decisions, 7 exits, 8 entries (default: 0-9)")
      ->check(levels)
      ->type_name("LEVELS");
}

void addTime(CLI::App& command, Request& request, const std::string& what) {
  const auto time = [&request](const std::string& text) {
    std::string why;
    Kel::parseValue(text, request.time, why);
    return why;
  };
  command.add_option("--time", what)->check(time)->type_name("T");
}

CLI::App& addTranslate(CLI::App& app, Request& request) {
  CLI::App& command =
      *app.add_subcommand("translate", "print version 2 of what version-1 documents say");
  command.add_option("DOC", request.documents, "documents to merge; - is standard input")
      ->required()
      ->type_name("FILE");
  addTime(command, request, "what the clock shows, in seconds (default: 0)");
  addRunOptions(command, request);
  command.footer(kTranslateHelp);
  return command;
}

CLI::App& addReplay(CLI::App& app, Request& request) {
  ReplayRequest& replay = request.replay;
  CLI::App& command =
      *app.add_subcommand("replay", "apply a change log, with a clock of its own, and answer");
  command.add_option("LOG", replay.log, "change lines (default: standard input)")
      ->type_name("FILE");
  command.add_option("--config", replay.configs, "load this document first; may be repeated")
      ->allow_extra_args(false)
      ->type_name("DOC");
  command.add_option("--v2", replay.leftOver, "version 2 as an earlier run printed it")
      ->type_name("DOC");
  command.add_flag("--no-start", request.noStart, "start no tree; the log does");
  addTime(command, request, "what the clock shows at first, in seconds (default: 0)");
  addRunOptions(command, request);
  command.footer(kReplayHelp);
  return command;
}

CLI::App& addAudit(CLI::App& app, Request& request) {
  CLI::App& command =
      *app.add_subcommand("audit", "say where version 1 and version 2 differ, and why");
  command.add_option("DOC", request.documents, "documents with both versions and the monitor")
      ->required()
      ->type_name("FILE");
  addOutputOptions(command, request);
  command.footer(kAuditHelp);
  return command;
}

bool wantsColor(const std::string& when, const Console& console) {
  const char* const terminal = std::getenv("TERM");
  const char* const none = std::getenv("NO_COLOR");
  return when == "always" ||
         (when == "auto" && console.errIsTerminal && (none == nullptr || *none == '\0') &&
          (terminal == nullptr || std::string_view(terminal) != "dumb"));
}

/// The names of the options of `command`, and of its subcommands where the app itself is meant.
std::vector<std::string> namesOf(const CLI::App& command, bool options) {
  std::vector<std::string> names;
  if (options) {
    for (const CLI::Option* const option : command.get_options()) {
      for (const std::string& name : option->get_lnames()) {
        names.push_back(concat({"--", name}));
      }
    }
  } else {
    for (const CLI::App* const each : command.get_subcommands({})) {
      names.push_back(each->get_name());
    }
  }
  return names;
}

/// Why the command line was refused, for a person.
std::string whyRefused(CLI::App& app, const CLI::ParseError& error) {
  const auto chosen = app.get_subcommands();
  const CLI::App& command = chosen.empty() ? app : *chosen.front();
  const std::vector<std::string> left = app.remaining(true);
  if (!left.empty()) {
    // Options come before what the command could not do with the rest.
    const auto at = std::ranges::find_if(left, [](const auto& one) { return one[0] == '-'; });
    const std::string& wrong = at == left.end() ? left.front() : *at;
    const bool option = wrong.starts_with("-");
    const std::vector<std::string> names = namesOf(command, option);
    return std::string(option ? "there is no option " : "there is no command ") + wrong +
           didYouMean(wrong, {names.begin(), names.end()});
  }
  if (chosen.empty()) {
    return "a command is missing";
  }
  return error.what();
}

int refuse(CLI::App& app, const CLI::ParseError& error, const Request& request,
           const Console& console) {
  Report(console.err, wantsColor(request.color, console)).problem("vpm", whyRefused(app, error));
  const auto chosen = app.get_subcommands();
  console.err << "vpm: try \"vpm " << (chosen.empty() ? "" : chosen.front()->get_name() + " ")
              << "--help\"\n";
  return kWrongInput;
}

int parseAndRun(const std::vector<std::string>& arguments, Request& request,
                const Console& console) {
  CLI::App app("Translates the policy configuration of service devices into version 2.", "vpm");
  app.set_version_flag("--version", "vpm " VPM_VERSION);
  app.require_subcommand(1);
  app.get_formatter()->column_width(24);
  app.footer("\"vpm COMMAND --help\" tells more, with examples.\n");
  addTranslate(app, request);
  const CLI::App& replays = addReplay(app, request);
  const CLI::App& audits = addAudit(app, request);
  try {
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    console.out.write(app.help());
    return kDone;
  } catch (const CLI::CallForVersion&) {
    console.out.write("vpm " VPM_VERSION "\n");
    return kDone;
  } catch (const CLI::ParseError& error) {
    return refuse(app, error, request, console);
  }
  request.run.color = wantsColor(request.color, console);
  request.run.progress = !request.quiet && (request.progress || console.errIsTerminal);
  if (audits.parsed()) {
    return auditDocuments(request.documents, request.run, console);
  }
  if (replays.parsed()) {
    request.replay.time = request.time;
    request.replay.start = !request.noStart;
    return replay(request.replay, request.run, console);
  }
  return translate(request.documents, request.time, request.run, console);
}

}  // namespace

int run(const std::vector<std::string>& arguments, const Console& console) {
  Request request;
  try {
    return parseAndRun(arguments, request, console);
  } catch (const OutputError& error) {
    Report(console.err, wantsColor(request.color, console)).problem("vpm", error.what());
  } catch (const std::bad_alloc&) {
    console.err << "vpm: error: there is not enough memory for this\n";
  } catch (const std::exception& error) {
    Report(console.err, wantsColor(request.color, console)).problem("vpm", error.what());
  }
  return kFailed;
}

}  // namespace Host
