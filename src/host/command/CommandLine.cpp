#include "command/CommandLine.h"

#include <new>

#include "command/CommandTable.h"
#include "command/Commands.h"
#include "text/ExitCode.h"
#include "text/Report.h"

namespace Host {

void addCommands(CommandTable& table) {
  table.heading("Documents and logs of changes");
  addTranslate(table);
  addReplay(table);
  addAudit(table);
  addExplain(table);
  addTrace(table);
  table.heading("The agent");
  addAgent(table);
  addCtl(table);
  table.heading("This program");
  addMan(table);
  addCompletion(table);
}

int run(const std::vector<std::string>& arguments, const Console& console) {
  CommandTable table;
  addCommands(table);
  try {
    return table.run(arguments, console);
  } catch (const std::bad_alloc&) {
    console.err << "vpm: error: there is not enough memory for this\n";
  } catch (const std::exception& error) {
    Report(console.err, table.wantsColor(console)).problem("vpm", error.what());
  }
  return kFailed;
}

}  // namespace Host
