#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Host {

/// An option or an argument of a command, in words.
struct OptionText {
  std::vector<std::string> names;  ///< "-o", "--output"; of an argument the one that help shows
  std::string value;               ///< what stands for the value in help; empty: takes none
  std::string about;
  std::vector<std::string> choices;  ///< the values that there are; empty: any
  bool required = false;
  bool repeated = false;

  /// Whether its value is a file.
  bool isFile() const;
};

/// A command in words: what help, the manual page and the completions are made from.
struct CommandText {
  std::string name;  ///< what is typed: "vpm ctl show"
  std::string about;
  std::string help;  ///< what stands below the options
  std::string heading;
  std::vector<OptionText> arguments;
  std::vector<OptionText> options;
  std::vector<CommandText> commands;

  /// "vpm ctl show [OPTIONS] [PATH]".
  std::string usage() const;
};

/// The command and all below it.
CommandText textOf(const CLI::App& command);

/// Limits an option to these values; another one is refused with the nearest of them.
void choicesAre(CLI::Option& option, const std::vector<std::string>& choices);

/// What a command or an option is about, as a sentence.
std::string sentenceOf(std::string about);

/// The help of a command; no line is wider than a terminal.
std::string helpOf(const CommandText& command);

/// Calls `visit` for the command and all below it.
template <class Visit>
void forEachCommand(const CommandText& command, const Visit& visit) {
  visit(command);
  for (const CommandText& each : command.commands) {
    forEachCommand(each, visit);
  }
}

}  // namespace Host
