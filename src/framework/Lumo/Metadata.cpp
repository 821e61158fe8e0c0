#include "Lumo/Metadata.h"

#include <unistd.h>

#include <string_view>
#include <vector>

#include "Lumo/Site.h"

namespace Lumo {
namespace {

constexpr std::string_view kTypes =
    "typealias integer { size = 8; align = 8; signed = false; } := u8;\n"
    "typealias integer { size = 16; align = 8; signed = false; } := u16;\n"
    "typealias integer { size = 32; align = 8; signed = false; } := u32;\n"
    "typealias integer { size = 64; align = 8; signed = false; } := u64;\n"
    "typealias integer { size = 8; align = 8; signed = true; } := i8;\n"
    "typealias integer { size = 16; align = 8; signed = true; } := i16;\n"
    "typealias integer { size = 32; align = 8; signed = true; } := i32;\n"
    "typealias integer { size = 64; align = 8; signed = true; } := i64;\n"
    "typealias floating_point { exp_dig = 11; mant_dig = 53; align = 8; } := f64;\n\n";

constexpr std::string_view kStream =
    "clock {\n"
    "  name = event_time;\n"
    "  description = \"Time of the outermost event, counted up within it\";\n"
    "  freq = 1000000000;\n"
    "  offset_s = 0;\n"
    "  offset = 0;\n"
    "  absolute = true;\n"
    "};\n"
    "typealias integer { size = 64; align = 8; signed = false; map = clock.event_time.value; } :="
    " stamp;\n\n"
    "stream {\n"
    "  id = 0;\n"
    "  packet.context := struct {\n"
    "    stamp timestamp_begin;\n"
    "    stamp timestamp_end;\n"
    "    u64 content_size;\n"
    "    u64 packet_size;\n"
    "    u64 packet_seq_num;\n"
    "    u64 events_discarded;\n"
    "  };\n"
    "  event.header := struct { u32 id; stamp timestamp; };\n"
    "  event.context := struct { f64 seconds; u64 subject; };\n"
    "};\n\n";

std::string number(std::uint64_t value) { return std::to_string(value); }

// A string literal of the metadata language.
std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '"' || byte == '\\') {
      out.append("\\").append(1, byte);
    } else if (code < 0x20 || code == 0x7f) {
      const char octal[] = {'\\', static_cast<char>('0' + (code >> 6U)),
                            static_cast<char>('0' + ((code >> 3U) & 7U)),
                            static_cast<char>('0' + (code & 7U))};
      out.append(octal, sizeof octal);
    } else {
      out += byte;
    }
  }
  return out + "\"";
}

bool isWordByte(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9');
}

// " Rule priority: " names the value behind it "_Rule_priority"; readers take the first underscore
// off, which is there because a bare name could be a word of the language.
std::string fieldName(std::string_view label, std::vector<std::string>& taken) {
  std::string name;
  for (const char byte : label) {
    if (isWordByte(byte)) {
      name += byte;
    } else if (!name.empty() && name.back() != '_') {
      name += '_';
    }
  }
  while (!name.empty() && name.back() == '_') {
    name.pop_back();
  }
  name = "_" + (name.empty() ? "value" : name);
  const std::string first = name;
  for (std::size_t i = 0, copy = 2; i < taken.size(); ++i) {
    if (taken[i] == name) {
      name = first + "_" + number(copy++);
      i = static_cast<std::size_t>(-1);  // begin anew: the numbered name may be taken too
    }
  }
  taken.push_back(name);
  return name;
}

std::string field(const ValueType& type, const std::string& name) {
  const std::string bits = number(type.size * 8U);
  switch (type.kind) {
    case Kind::text:
      return "string " + name;
    case Kind::natural:
      return "u" + bits + " " + name;
    case Kind::integer:
      return "i" + bits + " " + name;
    case Kind::boolean:
      return "enum : u8 { \"false\" = 0, \"true\" = 1 } " + name;
    case Kind::real:
      return "f64 " + name;
    case Kind::bytes:
      return "u8 " + name + "[" + number(type.size) + "]";
    case Kind::enumeration:
      break;
  }
  if (type.labels.empty()) {
    return "u" + bits + " " + name;
  }
  std::string out = "enum : u" + bits + " {";
  for (std::size_t i = 0; i < type.labels.size(); ++i) {
    out += (i == 0 ? " " : ", ") + quoted(type.labels[i]) + " = " + number(i);
  }
  return out + " } " + name;
}

std::string uuidText(const Uuid& uuid) {
  std::string out;
  for (std::size_t i = 0; i < uuid.size(); ++i) {
    out += i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "";
    out += "0123456789abcdef"[uuid[i] >> 4U];
    out += "0123456789abcdef"[uuid[i] & 15U];
  }
  return out;
}

std::string environmentEntry(const Site& site) {
  std::string parts = site.facility + "|" + number(site.level) + "|" + site.file + "|" +
                      number(site.line) + "|" + std::string(site.handler());
  for (const Piece& piece : site.pieces) {
    if (piece.value != nullptr) {
      parts.append("|").append(piece.value->name);
    }
  }
  return "  site_" + number(site.id) + " = " + quoted(parts) + ";\n";
}

std::string event(const Site& site) {
  std::string out = "event {\n  id = " + number(site.id) +
                    ";\n  stream_id = 0;\n  name = " + quoted(site.format()) +
                    ";\n  loglevel = " + number(site.level) + ";\n  fields := struct {";
  std::vector<std::string> taken;
  std::string_view label;
  for (const Piece& piece : site.pieces) {
    if (piece.value == nullptr) {
      label = piece.literal;
    } else {
      out += " " + field(*piece.value, fieldName(label, taken)) + ";";
      label = {};
    }
  }
  return out + " };\n};\n\n";
}

}  // namespace

std::string metadataText(const Uuid& uuid, std::uint32_t sites) {
  std::string out = "/* CTF 1.8 */\n\n";
  out += kTypes;
  out += "trace {\n  major = 1;\n  minor = 8;\n  byte_order = le;\n  uuid = \"" + uuidText(uuid) +
         "\";\n  packet.header := struct {\n    u32 magic;\n    u8 uuid[16];\n    u32 stream_id;\n"
         "    u64 stream_instance_id;\n  };\n};\n\n";
  out += "env {\n  tracer_name = \"Lumo\";\n  process_id = " +
         number(static_cast<std::uint64_t>(getpid())) + ";\n";
  for (std::uint32_t id = 0; id < sites; ++id) {
    out += environmentEntry(*siteOf(id));
  }
  out += "};\n\n";
  out += kStream;
  for (std::uint32_t id = 0; id < sites; ++id) {
    out += event(*siteOf(id));
  }
  return out;
}

}  // namespace Lumo
