#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "text/Console.h"
#include "text/RunOptions.h"

namespace CLI {
class App;
}

namespace Host {

/// The commands of the program: what the command line, its help, the manual page and the shells'
/// completions are made from. A command is added by a function of its own (Commands.h):
///
///   void addAudit(CommandTable& table) {
///     const auto documents = std::make_shared<std::vector<std::string>>();
///     CLI::App& command = table.add("audit", "say where …", kAuditHelp,
///         [documents](const RunOptions& options, const Console& console) {
///           return auditDocuments(*documents, options, console);
///         });
///     command.add_option("DOC", *documents, "…")->required();
///     table.addOutputOptions(command);
///   }
class CommandTable {
 public:
  /// Runs a command; what it was asked for was put where its options say.
  using Action = std::function<int(const RunOptions& options, const Console& console)>;

  CommandTable();
  CommandTable(const CommandTable&) = delete;
  CommandTable& operator=(const CommandTable&) = delete;
  ~CommandTable();

  /// What the commands that are added from here on are listed under.
  void heading(const char* heading) { heading_ = heading; }
  /// A command with one line about it, and what stands below the options in its help.
  CLI::App& add(const char* name, const char* about, const char* help, Action action);
  /// A command of a command: "vpm ctl show".
  CLI::App& add(CLI::App& parent, const char* name, const char* about, const char* help,
                Action action);
  /// A command that has nothing but commands of its own: "vpm ctl".
  CLI::App& addGroup(const char* name, const char* about, const char* help);

  /// --output, --progress, --quiet, --color.
  void addOutputOptions(CLI::App& command);
  /// --color alone.
  void addColorOption(CLI::App& command);
  /// These and --trace, --trace-file, --trace-size, --trace-levels.
  void addRunOptions(CLI::App& command);
  /// --time, in seconds.
  void addTime(CLI::App& command, Kel::Seconds& time, const std::string& what);

  /// Everything there is, for what is made from it.
  const CLI::App& app() const { return *app_; }

  /// Parses the arguments and runs the command that they name. Raises what the command raises.
  int run(const std::vector<std::string>& arguments, const Console& console);
  /// Whether messages are to be coloured, as far as the command line was understood.
  bool wantsColor(const Console& console) const { return wantsColor(console.errIsTerminal); }

 private:
  struct Entry {
    const CLI::App* command;
    Action action;
  };

  bool wantsColor(bool terminal) const;
  const CLI::App& chosen() const;
  int refuse(const std::string& why, const Console& console) const;

  std::unique_ptr<CLI::App> app_;
  std::vector<Entry> entries_;
  const char* heading_ = "";
  RunOptions options_;
  std::string color_ = "auto";
  bool progress_ = false;
  bool quiet_ = false;
};

}  // namespace Host
