#include "common/NameEncoder.h"

#include <string>
#include <utility>

namespace VelaL3V2Shared {

Kel::String NameEncoder::encode(const NameSet& names) {
  std::string text;
  for (const auto& [index, name] : names) {
    for (const char byte : name.view()) {
      if (byte == ':' || byte == '\\') {
        text += '\\';
      }
      text += byte;
    }
    text += ':';
  }
  if (!text.empty()) {
    text.pop_back();
  }
  return text;
}

NameSet NameEncoder::decode(const Kel::String& text) {
  if (text.empty()) {
    return {};
  }
  NameSet names;
  constexpr std::size_t kUsualName = 100;
  std::string component;
  component.reserve(kUsualName);
  NameSet::Index index = 0;
  bool escaped = false;
  for (const char byte : text.view()) {
    if (escaped) {
      component += byte;
      escaped = false;
    } else if (byte == '\\') {
      escaped = true;
    } else if (byte == ':') {
      names.nameIs(index++, component);
      component.clear();
    } else {
      component += byte;
    }
  }
  names.nameIs(index, component);
  return names;
}

}  // namespace VelaL3V2Shared
