#include "command/CommandText.h"
#include "command/Completion.h"
#include "text/Concat.h"

namespace Host {
namespace {

constexpr std::string_view kStart = R"(# Completes vpm in fish.
# The words so far lead from command to command.
function __vpm_command
    set -l command vpm
    set -l skip 0
    for word in (commandline -opc)[2..-1]
        if test $skip = 1
            set skip 0
            continue
        end
        switch "$command $word"
)";
constexpr std::string_view kMiddle = R"(                set command "$command $word"
)";
constexpr std::string_view kEnd = R"(                set skip 1
        end
    end
    echo $command
end

complete -c vpm -f
)";

std::string quoted(std::string_view text) {
  std::string out = "'";
  for (const char c : text) {
    out += c == '\'' || c == '\\' ? "\\" : "";
    out += c;
  }
  return out + "'";
}

/// How a value is completed.
std::string valueOf(const OptionText& option) {
  std::string choices;
  for (const std::string& choice : option.choices) {
    choices += concat({choices.empty() ? "" : " ", choice});
  }
  return !choices.empty() ? concat({" -a ", quoted(choices)}) : option.isFile() ? " -F" : "";
}

void appendCommand(std::string& out, const CommandText& command) {
  const std::string here = concat(
      {"complete -c vpm -n ", quoted(concat({"test (__vpm_command) = \"", command.name, "\""}))});
  for (const CommandText& each : command.commands) {
    out += concat({here, " -a ", each.name.substr(command.name.size() + 1), " -d ",
                   quoted(each.about), "\n"});
  }
  for (const OptionText& argument : command.arguments) {
    if (const std::string value = valueOf(argument); !value.empty()) {
      out += concat({here, value, "\n"});
    }
  }
  for (const OptionText& option : command.options) {
    out += here;
    for (const std::string& name : option.names) {
      out += name.starts_with("--") ? concat({" -l ", name.substr(2)})
                                    : concat({" -s ", name.substr(1)});
    }
    out += concat(
        {option.value.empty() ? "" : " -r", valueOf(option), " -d ", quoted(option.about), "\n"});
  }
}

}  // namespace

std::string fishCompletion(const CommandText& program) {
  std::string commands = "            case";
  std::string withValue = "            case";
  std::string entries;
  forEachCommand(program, [&](const CommandText& command) {
    commands += concat({" \\\n                ", quoted(command.name)});
    for (const OptionText& option : command.options) {
      for (const std::string& name : option.names) {
        if (!option.value.empty()) {
          withValue += concat({" \\\n                ", quoted(concat({command.name, " ", name}))});
        }
      }
    }
    appendCommand(entries, command);
  });
  return concat({kStart, commands, "\n", kMiddle, withValue, "\n", kEnd, entries});
}

}  // namespace Host
