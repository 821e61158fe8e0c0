#include "command/CommandTable.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>

#include "command/CommandText.h"
#include "command/HelpTexts.h"
#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/Report.h"
#include "text/Suggest.h"
#include "tracing/TraceScope.h"
#include "tracing/Tracing.h"

namespace Host {
namespace {

/// The names of the options of `command`, or of its commands.
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

/// Why the command line was refused, for a person. `command` is the innermost that was understood.
std::string whyRefused(const CLI::App& command, const CLI::ParseError& error) {
  const std::vector<std::string> left = command.remaining(true);
  const std::string kind = command.get_parent() == nullptr ? "" : command.get_name() + " ";
  if (!left.empty()) {
    // Options come before what the command could not do with the rest.
    const auto at = std::ranges::find_if(left, [](const auto& one) { return one[0] == '-'; });
    const bool option = at != left.end();
    const std::string& wrong = option ? *at : left.front();
    const std::vector<std::string> names = namesOf(command, option);
    if (!option && names.empty()) {
      return concat({"there is no use for ", wrong, " here"});
    }
    return concat({"there is no ", option ? "option " : concat({kind, "command "}), wrong,
                   didYouMean(wrong, {names.begin(), names.end()})});
  }
  if (!command.get_subcommands({}).empty()) {
    return concat({"a ", kind, "command is missing"});
  }
  return error.what();
}

}  // namespace

CommandTable::CommandTable()
    : app_(std::make_unique<CLI::App>(
          "translates the policy configuration of service devices into version 2", "vpm")) {
  app_->set_help_flag("-h,--help", "print this");
  app_->set_version_flag("--version", "vpm " VPM_VERSION)->description("print the version");
  app_->require_subcommand(1);
  app_->footer(kVpmHelp);
}

CommandTable::~CommandTable() = default;

CLI::App& CommandTable::add(const char* name, const char* about, const char* help, Action action) {
  CLI::App& command = add(*app_, name, about, help, std::move(action));
  command.group(heading_);
  return command;
}

CLI::App& CommandTable::add(CLI::App& parent, const char* name, const char* about, const char* help,
                            Action action) {
  CLI::App& command = *parent.add_subcommand(name, about);
  command.group("Commands")->footer(help);
  entries_.push_back({&command, std::move(action)});
  return command;
}

CLI::App& CommandTable::addGroup(const char* name, const char* about, const char* help) {
  CLI::App& group = *app_->add_subcommand(name, about);
  group.group(heading_);
  group.footer(help);
  group.require_subcommand(1);
  return group;
}

void CommandTable::addColorOption(CLI::App& command) {
  choicesAre(*command.add_option("--color", color_, "use colours: auto, always or never")
                  ->type_name("WHEN"),
             {"auto", "always", "never"});
}

void CommandTable::addOutputOptions(CLI::App& command) {
  command.add_option("-o,--output", options_.output, "write to this file, whole or not at all")
      ->type_name("FILE");
  command.add_flag("--progress", progress_, "show progress (default: on a terminal)");
  command.add_flag("-q,--quiet", quiet_, "show no progress");
  addColorOption(command);
}

void CommandTable::addRunOptions(CLI::App& command) {
  const auto levels = [this](const std::string& text) {
    std::string why;
    Kel::TextTrace::parseLevels(text, options_.traceLevels, why);
    return why;
  };
  const auto size = [this](const std::string& text) {
    std::string why;
    parseTraceSize(text, options_.traceSize, why);
    return why;
  };
  const auto subject = [this](const std::string& text) {
    std::string why;
    parseTraceSubject(text, options_.traceOnly, why);
    return why;
  };
  addOutputOptions(command);
  command.add_option("--trace", options_.trace, "write the text trace to this file; - is stderr")
      ->type_name("FILE");
  command
      .add_option("--trace-file", options_.traceFile,
                  "write the binary trace to this folder, for vpm trace")
      ->type_name("FOLDER");
  command.add_option("--trace-size", "how much of it is kept, the last lines (default: 8M)")
      ->check(size)
      ->type_name("SIZE");
  command.add_option("--trace-levels", "6 decisions, 7 exits, 8 entries (default: 0-9)")
      ->check(levels)
      ->type_name("LEVELS");
  command
      .add_option("--trace-only",
                  "only lines of device=NAME,vrf=NAME,rule=PRIORITY,handler=NAME (any of them)")
      ->check(subject)
      ->type_name("WHAT");
}

void CommandTable::addTime(CLI::App& command, Kel::Seconds& time, const std::string& what) {
  const auto parse = [&time](const std::string& text) {
    std::string why;
    Kel::parseValue(text, time, why);
    return why;
  };
  command.add_option("--time", what)->check(parse)->type_name("T");
}

const CLI::App& CommandTable::chosen() const {
  const CLI::App* command = app_.get();
  while (!command->get_subcommands().empty()) {
    command = command->get_subcommands().front();
  }
  return *command;
}

bool CommandTable::wantsColor(bool terminal) const {
  const char* const kind = std::getenv("TERM");
  const char* const none = std::getenv("NO_COLOR");
  return color_ == "always" ||
         (color_ == "auto" && terminal && (none == nullptr || *none == '\0') &&
          (kind == nullptr || std::string_view(kind) != "dumb"));
}

int CommandTable::refuse(const std::string& why, const Console& console) const {
  Report(console.err, wantsColor(console)).problem("vpm", why);
  console.err << "vpm: try \"" << textOf(chosen()).name << " --help\"\n";
  return kWrongInput;
}

int CommandTable::run(const std::vector<std::string>& arguments, const Console& console) {
  try {
    app_->parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    console.out.write(helpOf(textOf(chosen())));
    return kDone;
  } catch (const CLI::CallForVersion&) {
    console.out.write("vpm " VPM_VERSION "\n");
    return kDone;
  } catch (const CLI::ParseError& error) {
    return refuse(whyRefused(chosen(), error), console);
  }
  options_.color = wantsColor(console);
  options_.outColor = wantsColor(console.outIsTerminal);
  options_.progress = !quiet_ && (progress_ || console.errIsTerminal);
  const auto entry = std::ranges::find(entries_, &chosen(), &Entry::command);
  return entry->action(options_, console);
}

}  // namespace Host
