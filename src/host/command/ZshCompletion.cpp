#include <algorithm>

#include "command/CommandText.h"
#include "command/Completion.h"
#include "text/Concat.h"

namespace Host {
namespace {

/// Text between single quotes, with a backslash before each of `special`.
std::string quoted(std::string_view text, std::string_view special) {
  std::string out;
  for (const char c : text) {
    if (c == '\'') {
      out += "'\\''";
    } else {
      out += special.find(c) == std::string_view::npos ? "" : "\\";
      out += c;
    }
  }
  return out;
}

std::string functionOf(const CommandText& command) {
  std::string name = concat({"_", command.name});
  std::ranges::replace(name, ' ', '_');
  return name;
}

/// ":FILE:_files": what stands for a value, and how it is completed.
std::string valueOf(const OptionText& option) {
  std::string how = option.isFile() ? "_files" : " ";
  if (!option.choices.empty()) {
    how = "(";
    for (const std::string& choice : option.choices) {
      how += concat({how.size() == 1 ? "" : " ", choice});
    }
    how += ")";
  }
  const bool argument = !option.names.front().starts_with('-');
  return concat({":", argument ? option.names.front() : option.value, ":", how});
}

void appendOption(std::string& out, const OptionText& option) {
  const std::string about =
      concat({"[", quoted(option.about, "[]:"), "]", option.value.empty() ? "" : valueOf(option)});
  std::string all;
  for (const std::string& name : option.names) {
    all += concat({all.empty() ? "" : " ", name});
  }
  for (const std::string& name : option.names) {
    const std::string often = option.repeated ? "*" : concat({"(", all, ")"});
    out += concat({" \\\n    '", often, name, about, "'"});
  }
}

void appendFunction(std::string& out, const CommandText& command) {
  for (const CommandText& each : command.commands) {
    appendFunction(out, each);
  }
  out += concat({functionOf(command), "() {\n"});
  if (!command.commands.empty()) {
    out += "  local state line\n  local -a commands=(\n";
    for (const CommandText& each : command.commands) {
      out += concat(
          {"    '", each.name.substr(command.name.size() + 1), ":", quoted(each.about, ""), "'\n"});
    }
    out += "  )\n";
  }
  out += command.commands.empty() ? "  _arguments" : "  _arguments -C";
  for (const OptionText& option : command.options) {
    appendOption(out, option);
  }
  for (const OptionText& argument : command.arguments) {
    out += concat({" \\\n    '", argument.repeated ? "*" : "", valueOf(argument), "'"});
  }
  if (!command.commands.empty()) {
    out += R"( \
    '1:command:->command' \
    '*::argument:->argument'
  case $state in
    command) _describe command commands ;;
    argument)
      case $line[1] in
)";
    for (const CommandText& each : command.commands) {
      out += concat(
          {"        ", each.name.substr(command.name.size() + 1), ") ", functionOf(each), " ;;\n"});
    }
    out += "      esac ;;\n  esac";
  }
  out += "\n}\n\n";
}

}  // namespace

std::string zshCompletion(const CommandText& program) {
  std::string out = "#compdef vpm\n# Completes vpm in zsh.\n\n";
  appendFunction(out, program);
  // The file is the body of _vpm when zsh loads it upon first use, and a script when it is sourced.
  return out +
         "if [[ $funcstack[1] == _vpm ]]; then\n  _vpm \"$@\"\nelse\n  compdef _vpm vpm\nfi\n";
}

}  // namespace Host
