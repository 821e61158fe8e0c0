#include "model/reference/Policy.h"

namespace Reference {
namespace {

using Components = std::map<unsigned, Text>;

Text encode(const Components& components) {
  Text out;
  for (const auto& [index, component] : components) {
    for (const char byte : component) {
      if (byte == ':' || byte == '\\') {
        out += '\\';
      }
      out += byte;
    }
    out += ':';
  }
  if (!out.empty()) {
    out.pop_back();
  }
  return out;
}

Components decode(const Text& text) {
  Components components;
  if (text.empty()) {
    return components;
  }
  Text current;
  unsigned index = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '\\') {
      if (++at < text.size()) {
        current += text[at];
      }
    } else if (text[at] == ':') {
      components[index++] = current;
      current.clear();
    } else {
      current += text[at];
    }
  }
  components[index] = current;
  return components;
}

}  // namespace

NodePtr policyList(const NodePtr& status, const Text& deviceName) {
  if (!status) {
    return nullptr;
  }
  Components components = decode(deviceName);
  const Text marker = "_HAPair";
  const Text device = components[0];
  if (!device.ends_with(marker)) {
    return status->entry(257, deviceName);
  }
  Components members = decode(device.substr(0, device.size() - marker.size()));
  const NodePtr first =
      status->entry(257, encode({{0, members[0]}, {1, components[1]}, {2, components[2]}}));
  return first ? first
               : status->entry(257,
                               encode({{0, members[1]}, {1, components[1]}, {2, components[2]}}));
}

}  // namespace Reference
