#include "command/CommandText.h"
#include "command/Completion.h"
#include "text/Concat.h"

namespace Host {
namespace {

constexpr std::string_view kStart = R"(# Completes vpm in bash.
_vpm() {
  local command=vpm word=${COMP_WORDS[COMP_CWORD]} option= words= files= i next
  # The words so far lead from command to command. Bash breaks --color=auto into three.
  for ((i = 1; i < COMP_CWORD; i++)); do
    next="$command ${COMP_WORDS[i]}"
    case $next in
)";
constexpr std::string_view kMiddle = R"(        [[ ${COMP_WORDS[i + 1]} != '=' ]] || ((i += 1))
        ((i + 1 < COMP_CWORD)) || option=$next
        ((i += 1)) ;;
    esac
  done
  [[ $word != '=' ]] || word=
  case ${option:-$command} in
)";
constexpr std::string_view kEnd = R"(  esac
  if [[ $files ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  fi
}
complete -F _vpm vpm
)";

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    text += concat({text.empty() ? "" : " ", word});
  }
  return text;
}

/// Adds a pattern to those of a case: 'vpm ctl' | 'vpm ctl show'.
void addPattern(std::string& patterns, const std::string& pattern) {
  patterns += concat({patterns.empty() ? "      " : " | \\\n      ", "'", pattern, "'"});
}

/// What is completed where an argument or the value of an option stands.
std::string valueOf(const OptionText& option) {
  return option.isFile()          ? "files=1"
         : option.choices.empty() ? ":"
                                  : concat({"words='", joined(option.choices), "'"});
}

void appendCommand(std::string& out, const CommandText& command) {
  std::vector<std::string> options;
  for (const OptionText& option : command.options) {
    options.insert(options.end(), option.names.begin(), option.names.end());
    if (!option.value.empty()) {
      std::string patterns;
      for (const std::string& name : option.names) {
        addPattern(patterns, concat({command.name, " ", name}));
      }
      out += concat({patterns, ") ", valueOf(option), " ;;\n"});
    }
  }
  std::vector<std::string> below;
  for (const CommandText& each : command.commands) {
    below.push_back(each.name.substr(command.name.size() + 1));
  }
  const std::string other = !below.empty()              ? concat({"words='", joined(below), "'"})
                            : command.arguments.empty() ? ":"
                                                        : valueOf(command.arguments.front());
  out += concat({"      '", command.name, "')\n        if [[ $word == -* ]]; then words='",
                 joined(options), "'; else ", other, "; fi ;;\n"});
}

}  // namespace

std::string bashCompletion(const CommandText& program) {
  std::string commands;
  std::string withValue;
  std::string cases;
  forEachCommand(program, [&](const CommandText& command) {
    if (&command != &program) {
      addPattern(commands, command.name);
    }
    for (const OptionText& option : command.options) {
      for (const std::string& name : option.names) {
        if (!option.value.empty()) {
          addPattern(withValue, concat({command.name, " ", name}));
        }
      }
    }
    appendCommand(cases, command);
  });
  return concat(
      {kStart, commands, ")\n        command=$next ;;\n", withValue, ")\n", kMiddle, cases, kEnd});
}

}  // namespace Host
