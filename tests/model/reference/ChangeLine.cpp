#include <map>

#include "model/reference/Operation.h"

namespace Reference {
namespace {

using Verb = Operation::Verb;

/// How an attribute is called in documents.
struct Name {
  const char* node;
  const char* key = "";  ///< of a list; "." of a leaf-list, two with a blank of a list of records
  bool quoted = true;    ///< whether its values are
};

// By how many steps below the top the entity stands, and the attribute's number.
using Names = std::map<std::pair<std::size_t, int>, Name>;

const Names kPolicy = {
    {{0, 258}, {"policy-set", "device-name"}},
    {{1, 259}, {"policy", "vrf-name"}},
    {{2, 259}, {"rule", "priority"}},
    {{2, 261}, {"timestamp"}},
    {{3, 261}, {"origin", "name"}},
    {{4, 259}, {"tags"}},
    {{4, 261}, {"policy-modifier", "."}},
    {{4, 263}, {"match"}},
    {{4, 264}, {"action"}},
    {{4, 265}, {"log", "", false}},
    {{5, 258}, {"src-ip", "."}},
    {{5, 259}, {"src-ip-range", "first last"}},
    {{5, 260}, {"dst-ip", "."}},
    {{5, 261}, {"dst-ip-range", "first last"}},
    {{5, 262}, {"l3-app", ".", false}},
    {{5, 263}, {"src-l4-app", "port protocol", false}},
    {{5, 264}, {"src-l4-app-range", "first last protocol", false}},
    {{5, 265}, {"dst-l4-app", "port protocol", false}},
    {{5, 266}, {"dst-l4-app-range", "first last protocol", false}},
};
const Names kService = {
    {{0, 258}, {"service-device", "device-name"}},
    {{1, 259}, {"vrf", "vrf-name"}},
    {{2, 259}, {"l3-intf", "address"}},
    {{2, 260}, {"timestamp"}},
    {{3, 259}, {"reachable-subnet", "."}},
};
const Names kStatus = {
    {{0, 257}, {"device-policy-list", "device-name"}},
    {{1, 259}, {"net-vrf-name-by-vrf", "vrf-name"}},
    {{1, 260}, {"traffic-inspection"}},
};

struct Top {
  const char* path;
  const Names& names;
};
const Top kTops[] = {{"/vela-l3:policy-source", kPolicy},
                     {"/vela-l3:service-device-source", kService},
                     {"/vela-policy-monitor:status", kStatus}};

Text escaped(const Text& text) {
  Text out;
  for (const char byte : text) {
    out += byte == '"' || byte == '\\' ? Text("\\") + byte : Text(1, byte);
  }
  return out;
}

// Calls `each` with every key of a list and its part of the printed key.
template <class Each>
void forEachKey(const Name& name, const Text& key, const Each& each) {
  const Text label = " IP range: ";
  const Text names = name.key;
  const bool parted = names.find(' ') != Text::npos;
  std::size_t at = key.starts_with(label) ? label.size() : 0;
  for (std::size_t from = 0; from < names.size();) {
    const std::size_t end = std::min(names.find(' ', from), names.size());
    const std::size_t stop =
        parted ? std::min(key.find_first_of("-/", at), key.size()) : key.size();
    each(names.substr(from, end - from), key.substr(at, stop - at));
    from = end + 1;
    at = stop + 1;
  }
}

Text step(const Name& name, const Text& key) {
  Text out = Text("/") + name.node;
  forEachKey(name, key, [&out](const Text& which, const Text& value) {
    out += "[" + which + "='" + value + "']";
  });
  return out;
}

Text valued(const Name& name, const Text& value) {
  return name.quoted ? "\"" + escaped(value) + "\"" : value;
}

// The value that an update of the entity merges in.
Text valueOf(const Operation& operation, const Name& name) {
  if (operation.verb == Verb::write) {
    return Text("{\"") + name.node + "\":" + valued(name, operation.value) + "}";
  }
  if (operation.verb == Verb::name) {
    return Text("{\"") + name.node + "\":[{\"vrf-name\":\"" + operation.key +
           "\",\"net-vrf-name\":\"" + operation.value + "\"}]}";
  }
  if (Text(name.key) == ".") {
    return Text("{\"") + name.node + "\":[" + valued(name, operation.key) + "]}";
  }
  Text members;
  forEachKey(name, operation.key, [&](const Text& which, const Text& value) {
    const bool number = !name.quoted || which == "priority";
    members += (members.empty() ? "\"" : ",\"") + which +
               "\":" + (number ? value : "\"" + escaped(value) + "\"");
  });
  return Text("{\"") + name.node + "\":" + (*name.key == '\0' ? "{}" : "[{" + members + "}]") + "}";
}

Text controlLine(const Operation& operation) {
  const std::map<Text, const char*> calls = {{"cleanup()", "cleanup"},
                                             {"handleInitialized()", "initialize"}};
  const auto call = calls.find(operation.value);
  const char* const verb = operation.verb == Verb::suspend                       ? "suspend"
                           : operation.verb == Verb::resume                      ? "resume"
                           : operation.verb == Verb::stop                        ? "stop"
                           : operation.verb == Verb::start                       ? "start"
                           : operation.verb == Verb::call && call != calls.end() ? call->second
                                                                                 : nullptr;
  if (verb == nullptr || !operation.at.steps.empty() || operation.at.from == From::held) {
    return {};
  }
  return Text("{\"control\":\"") + verb + "\",\"tree\":\"" +
         (operation.at.from == From::policyRoot ? "policy" : "service-device") + "\"}";
}

}  // namespace

Text changeLineOf(const Operation& operation) {
  if (operation.at.from > From::status) {
    return controlLine(operation);
  }
  const Top& top = kTops[static_cast<std::size_t>(operation.at.from)];
  Text path = top.path;
  std::size_t depth = 0;
  for (const auto& [id, key] : operation.at.steps) {
    path += step(top.names.at({depth++, id}), key);
  }
  const auto found = top.names.find({depth, operation.id});
  if (found == top.names.end()) {
    return {};
  }
  const Text below = escaped(path + step(found->second, operation.key));
  switch (operation.verb) {
    case Verb::put:
    case Verb::write:
    case Verb::name:
      return R"({"update":[{"path":")" + escaped(path) + R"(","value":)" +
             valueOf(operation, found->second) + R"(}],"signal":false})";
    case Verb::erase:
      return R"({"delete":[")" + below + R"("],"signal":false})";
    case Verb::notify:
      return R"({"notify":[")" + below + R"("],"signal":false})";
    default:
      return {};
  }
}

}  // namespace Reference
