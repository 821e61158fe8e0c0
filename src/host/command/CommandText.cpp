#include "command/CommandText.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>

#include "text/Concat.h"
#include "text/LineFiller.h"
#include "text/Suggest.h"

namespace Host {
namespace {

constexpr char kBetween = '|';  // of the choices, in the name of the check that knows them

OptionText textOf(const CLI::Option& option) {
  OptionText text;
  if (option.get_positional()) {
    text.names = {option.get_name(true)};
  }
  for (const std::string& name : option.get_snames()) {
    text.names.push_back(concat({"-", name}));
  }
  for (const std::string& name : option.get_lnames()) {
    text.names.push_back(concat({"--", name}));
  }
  text.value = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
  text.about = option.get_description();
  text.required = option.get_required();
  text.repeated = option.get_expected_max() > 1;
  // A type name is followed by the names of its checks.
  if (const std::size_t end = text.value.find(':'); end != std::string::npos) {
    const std::string choices = text.value.substr(end + 1);
    text.value.resize(end);
    for (std::size_t at = 0; choices.find(kBetween) != std::string::npos && at < choices.size();) {
      const std::size_t stop = std::min(choices.find(kBetween, at), choices.size());
      text.choices.push_back(choices.substr(at, stop - at));
      at = stop + 1;
    }
  }
  return text;
}

std::string fullNameOf(const CLI::App& command) {
  const CLI::App* const above = command.get_parent();
  return above == nullptr ? command.get_name()
                          : concat({fullNameOf(*above), " ", command.get_name()});
}

/// "Options:" and the like, with one entry per line, the words about it in a column of their own.
class HelpList {
 public:
  HelpList(std::string& out, std::string_view heading) : out_(out) {
    out_ += concat({"\n", heading, ":\n"});
  }
  void add(std::string_view what, std::string_view about) {
    LineFiller line(out_, 2, kAbout);
    line.words(what);
    line.tab(kAbout);
    line.words(about);
    line.end();
  }

 private:
  static constexpr std::size_t kAbout = 24;
  std::string& out_;
};

/// "-o, --output FILE".
std::string shown(const OptionText& option) {
  std::string text;
  for (const std::string& name : option.names) {
    text += text.empty() ? name : concat({", ", name});
  }
  return option.value.empty() ? text : concat({text, " ", option.value});
}

}  // namespace

bool OptionText::isFile() const { return value == "FILE" || value == "DOC" || value == "SOCKET"; }

std::string CommandText::usage() const {
  std::string text = concat({name, " [OPTIONS]"});
  if (!commands.empty()) {
    text += " COMMAND";
  }
  for (const OptionText& argument : arguments) {
    const std::string one = concat({argument.names.front(), argument.repeated ? "..." : ""});
    text += argument.required ? concat({" ", one}) : concat({" [", one, "]"});
  }
  return text;
}

CommandText textOf(const CLI::App& command) {
  CommandText text{fullNameOf(command),
                   command.get_description(),
                   command.get_footer(),
                   command.get_group(),
                   {},
                   {},
                   {}};
  for (const CLI::Option* const option : command.get_options()) {
    (option->get_positional() ? text.arguments : text.options).push_back(textOf(*option));
  }
  for (const CLI::App* const below : command.get_subcommands({})) {
    text.commands.push_back(textOf(*below));
  }
  return text;
}

void choicesAre(CLI::Option& option, const std::vector<std::string>& choices) {
  std::string name;
  std::string all;
  for (const std::string& choice : choices) {
    name += concat({name.empty() ? "" : "|", choice});
    all += concat({all.empty() ? "" : choice == choices.back() ? " or " : ", ", choice});
  }
  const auto check = [choices, all](const std::string& text) {
    return std::ranges::find(choices, text) != choices.end()
               ? ""
               : concat({text, " is unknown; expected ", all,
                         didYouMean(text, {choices.begin(), choices.end()})});
  };
  option.check(CLI::Validator(check, name));
}

std::string sentenceOf(std::string about) {
  about.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(about.front())));
  return about + ".";
}

std::string helpOf(const CommandText& command) {
  std::string out = concat({"Usage: ", command.usage(), "\n\n"});
  LineFiller about(out, 0, 0);
  about.words(sentenceOf(command.about));
  about.end();
  if (!command.arguments.empty()) {
    HelpList list(out, "Arguments");
    for (const OptionText& argument : command.arguments) {
      list.add(argument.names.front(), argument.about);
    }
  }
  for (auto at = command.commands.begin(); at != command.commands.end();) {
    const std::string& heading = at->heading;
    HelpList list(out, heading);
    for (; at != command.commands.end() && at->heading == heading; ++at) {
      list.add(at->name.substr(command.name.size() + 1), at->about);
    }
  }
  HelpList list(out, "Options");
  for (const OptionText& option : command.options) {
    list.add(shown(option), option.about);
  }
  return command.help.empty() ? out : concat({out, "\n", command.help});
}

}  // namespace Host
