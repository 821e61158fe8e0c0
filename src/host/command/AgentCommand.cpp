#include <CLI/CLI.hpp>

#include "agent/Agent.h"
#include "command/CommandTable.h"
#include "command/Commands.h"

namespace Host {
namespace {

constexpr const char* kHelp =
    R"(The agent runs until it is told to stop: by "vpm ctl stop", SIGTERM or SIGINT.
It answers on a socket that its user alone can open: SOCKET, else $VPM_SOCKET,
else $XDG_RUNTIME_DIR/vpm.sock, else /run/vpm.sock. What it has to say goes to
standard error.

With --watch, upon SIGHUP and upon "vpm ctl reload" the documents are read
again, and just what differs is changed. A document with a mistake changes
nothing. --output is written when the agent stops: version 2 and the monitor's
records as they were.

Examples:
  vpm agent --config firewall.json
      run on one document
  vpm agent --config firewall.json pair.json --listen lab.sock
      merge two documents, and listen elsewhere
  vpm agent --config firewall.json --watch
      change what runs whenever the document is saved
  vpm agent --config firewall.json --state /var/lib/vpm
      survive a restart: what was acknowledged is on disk
  vpm agent --config firewall.json --record applied.log
      keep a change log of all that is applied, for "vpm replay"

Exit codes:
  0  stopped as told
  2  a document or the command line is wrong; the agent was not started
  3  the socket or a file cannot be used, or another agent listens there
)";

}  // namespace

void addAgent(CommandTable& table) {
  const auto asked = std::make_shared<AgentRequest>();
  CLI::App& command = table.add("agent", "run both trees and listen for changes", kHelp,
                                [asked](const auto& options, const auto& console) {
                                  return agent(*asked, options, console);
                                });
  command.add_option("--config", asked->configs, "load these documents first")->type_name("DOC");
  command.add_option("--listen", asked->listen, "the control socket")->type_name("SOCKET");
  command.add_option("--state", asked->state, "go on from this folder after a restart")
      ->type_name("DIR");
  command.add_option("--record", asked->record, "write what is applied to this file, as a log")
      ->type_name("FILE");
  command.add_flag("--watch", asked->watch, "follow saved edits of the documents");
  table.addRunOptions(command);
}

}  // namespace Host
