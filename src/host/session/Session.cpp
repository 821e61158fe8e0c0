#include "session/Session.h"

#include "change/Forecast.h"
#include "change/TreeEditor.h"
#include "text/Concat.h"

namespace Host {

std::optional<std::string> Session::apply(const Change& change) {
  Touched touched;
  TreeEditor editor(trees_, touched);
  TreeCursor& cursor = editor.cursor();
  auto refused = whyRefused(change, cursor);
  if (!refused) {
    refused = whyNotEntered(change);
  }
  if (refused) {
    ++statistics_.failed;
    return refused;
  }
  if (change.time) {
    clock_.timeIs(*change.time);
  }
  editor.edit(change);
  for (const TreePath& path : change.notifies) {
    editor.notify(path);
  }
  history_.changed(touched, change, translation_, cursor.error() != nullptr);
  control(change, cursor);
  if (change.signal) {
    const Touched burst = touched;
    editor.signal(burst, clock_.time());
  }
  statistics_.writes += cursor.writes();
  ++(cursor.error() == nullptr ? statistics_.applied : statistics_.failed);
  return cursor.error() == nullptr ? std::nullopt : std::optional(*cursor.error());
}

std::optional<std::string> Session::whyRefused(const Change& change, TreeCursor& cursor) const {
  Forecast forecast(cursor);
  for (const TreePath& path : change.deletes) {
    if (!forecast.exists(path)) {
      return concat({"nothing to delete at ", pathOf(stepsOf(path))});
    }
    forecast.erased(path);
  }
  if (!change.notifies.empty()) {
    for (const Edit& edit : change.replaces) {
      forecast.written(edit, true);
    }
    for (const Edit& edit : change.updates) {
      forecast.written(edit, false);
    }
  }
  for (const TreePath& path : change.notifies) {
    if (!forecast.objectExists(path)) {
      return concat(
          {"nothing to notify of at ", pathOf(stepsOf(path)), ": what it belongs to is not there"});
    }
  }
  if (change.control) {
    std::string why = translation_.whyNot(*change.control, change.policies, change.serviceDevices);
    if (!why.empty()) {
      return why;
    }
  }
  return std::nullopt;
}

std::optional<std::string> Session::whyNotEntered(const Change& change) const {
  for (Ledger* const ledger : ledgers_) {
    if (auto why = ledger->enter(change, change.time.value_or(clock_.time()))) {
      return why;
    }
  }
  return std::nullopt;
}

void Session::control(const Change& change, TreeCursor& cursor) {
  if (change.control && change.policies) {
    cursor.attempt([&] { translation_.controlPolicies(*change.control); });
    history_.controlled(history_.policies(), *change.control);
  }
  if (change.control && change.serviceDevices) {
    cursor.attempt([&] { translation_.controlServiceDevices(*change.control); });
    history_.controlled(history_.serviceDevices(), *change.control);
  }
}

}  // namespace Host
