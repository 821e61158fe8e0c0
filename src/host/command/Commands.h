#pragma once

namespace Host {

class CommandTable;

// Each adds a command to the table.

void addTranslate(CommandTable& table);
void addReplay(CommandTable& table);
void addAudit(CommandTable& table);
void addExplain(CommandTable& table);
void addCtl(CommandTable& table);
void addAgent(CommandTable& table);
void addTrace(CommandTable& table);
void addMan(CommandTable& table);
void addCompletion(CommandTable& table);

}  // namespace Host
