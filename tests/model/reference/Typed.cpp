#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "VelaL3/VelaL3.h"
#include "VelaL3V2/VelaL3V2.h"
#include "model/reference/LibrarySide.h"

namespace Reference {
namespace {

[[noreturn]] void unreadable(const Kel::ValueType& type, const Text& text, const Text& why) {
  std::fprintf(stderr, "\"%s\" is no %s: %s\n", text.c_str(), type.name, why.c_str());
  std::abort();
}

// The fields of a record stand in its printed form one after the other, with - or / between them.
void readFields(const Kel::ValueType& type, const Text& text, std::byte* place) {
  const Text label = " IP range: ";
  std::size_t at = text.starts_with(label) ? label.size() : 0;
  for (const Kel::Field& field : type.fields) {
    const std::size_t end = std::min(text.find_first_of("-/", at), text.size());
    Text why;
    if (!field.type().parse(text.substr(at, end - at), place + field.offset, why)) {
      unreadable(type, text, why);
    }
    at = end + 1;
  }
}

void read(const Kel::ValueType& type, const Text& text, void* place) {
  Text why;
  if (&type == &Kel::valueTypeOf<VelaL3::VelaPriority>()) {
    *static_cast<VelaL3::VelaPriority*>(place) =
        VelaL3::VelaPriority::unchecked(static_cast<std::uint32_t>(std::stoul(text)));
  } else if (&type == &Kel::valueTypeOf<VelaL3V2::VelaPriority>()) {
    *static_cast<VelaL3V2::VelaPriority*>(place) =
        VelaL3V2::VelaPriority::unchecked(static_cast<std::uint32_t>(std::stoul(text)));
  } else if (!type.fields.empty()) {
    readFields(type, text, static_cast<std::byte*>(place));
  } else if (type.size == 1 && !type.parse(text, place, why) && text.size() == 1) {
    *static_cast<char*>(place) = static_cast<char>(text.front() - '0');  // an ordinal out of range
  } else if (!type.parse(text, place, why)) {
    unreadable(type, text, why);
  }
}

}  // namespace

const void* typed(const Kel::ValueType& type, const Text& text) {
  static std::map<std::pair<const Kel::ValueType*, Text>, std::unique_ptr<Kel::AnyValue>> known;
  auto& value = known[{&type, text}];
  if (!value) {
    value = std::make_unique<Kel::AnyValue>(type);
    read(type, text, value->get());
  }
  return value->get();
}

void appendText(Text& out, const Kel::ValueType& type, const void* value) {
  if (!type.absent(value) || &type != &Kel::valueTypeOf<Kel::Seconds>()) {
    type.append(out, value);
  }
}

}  // namespace Reference
