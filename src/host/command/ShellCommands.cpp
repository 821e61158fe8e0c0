// The commands that help with the program itself.

#include <CLI/CLI.hpp>

#include "command/CommandTable.h"
#include "command/CommandText.h"
#include "command/Commands.h"
#include "command/Completion.h"
#include "command/HelpTexts.h"
#include "command/ManPage.h"
#include "text/ExitCode.h"

namespace Host {

void addMan(CommandTable& table) {
  table.add("man", "print the manual page", kManHelp,
            [&table](const RunOptions& /*options*/, const Console& console) {
              console.out.write(manPage(textOf(table.app()), VPM_VERSION));
              return static_cast<int>(kDone);
            });
}

void addCompletion(CommandTable& table) {
  const auto shell = std::make_shared<std::string>();
  CLI::App& command =
      table.add("completion", "print the script that completes vpm in a shell", kCompletionHelp,
                [&table, shell](const RunOptions& /*options*/, const Console& console) {
                  const CommandText program = textOf(table.app());
                  console.out.write(*shell == "bash"  ? bashCompletion(program)
                                    : *shell == "zsh" ? zshCompletion(program)
                                                      : fishCompletion(program));
                  return static_cast<int>(kDone);
                });
  choicesAre(*command.add_option("SHELL", *shell, "bash, zsh or fish")->required(),
             {"bash", "zsh", "fish"});
}

}  // namespace Host
