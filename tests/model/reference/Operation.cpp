#include "model/reference/Operation.h"

namespace Reference {
namespace {

constexpr const char* kVerbs[] = {"put",           "write",          "name",        "erase",
                                  "clear",         "notify",         "keep",        "forget",
                                  "observe",       "unobserve",      "raise",       "lose",
                                  "call",          "suspend",        "resume",      "mark",
                                  "unmark",        "childDel",       "childDelAll", "cookieIs",
                                  "initializedIs", "initCompleteIs", "hold",        "release",
                                  "listen",        "unlisten",       "start",       "stop"};
constexpr const char* kFroms[] = {"policyV1", "serviceV1",  "status",      "policyV2", "serviceV2",
                                  "kept",     "policyRoot", "serviceRoot", "held"};

Text lineOf(const Operation& operation, const Text& indent) {
  Text out = indent + kVerbs[static_cast<std::size_t>(operation.verb)] + " " +
             kFroms[static_cast<std::size_t>(operation.at.from)];
  if (operation.at.from == From::kept || operation.at.from == From::held) {
    out += "#" + std::to_string(operation.at.slot) + " " + operation.at.type;
  }
  for (const auto& [id, key] : operation.at.steps) {
    out += "/" + std::to_string(id) + "[" + key + "]";
  }
  out += " " + std::to_string(operation.id) + " [" + operation.key + "] \"" + operation.value +
         "\" slot " + std::to_string(operation.slot) + (operation.create ? " create" : "") +
         (operation.times == 0 ? "" : " times " + std::to_string(operation.times)) + "\n";
  for (const Operation& each : operation.nested) {
    out += lineOf(each, indent + "    ");
  }
  return out;
}

}  // namespace

Text textOf(const Operation& operation) { return lineOf(operation, ""); }

}  // namespace Reference
