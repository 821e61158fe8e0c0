#include "Pario/Message.h"

#include <cstring>

#include "Kel/ValueType.h"

namespace Pario {
namespace {

const Kel::ValueType* typeNamed(std::string_view name) {
  struct Search {
    std::string_view name;
    const Kel::ValueType* found;
  } search{name, nullptr};
  Kel::forEachValueType(
      [](void* context, const Kel::ValueType& type) {
        auto& wanted = *static_cast<Search*>(context);
        wanted.found = type.name == wanted.name ? &type : wanted.found;
      },
      &search);
  return search.found;
}

std::uint64_t unsignedOf(std::string_view bytes) {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes.data(), bytes.size());  // little-endian, as the record is
  return value;
}

std::int64_t signedOf(std::string_view bytes) {
  const auto shift = static_cast<unsigned>(64 - 8 * bytes.size());
  return static_cast<std::int64_t>(unsignedOf(bytes) << shift) >> shift;
}

double realOf(std::string_view bytes) {
  double value = 0;
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

void appendBytes(std::string& out, std::string_view bytes) {
  out += "0x";
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    out += "0123456789abcdef"[code >> 4U];
    out += "0123456789abcdef"[code & 15U];
  }
}

void appendTyped(std::string& out, const Lumo::RecordedValue& value) {
  const Kel::ValueType* const type = typeNamed(value.type->name);
  if (type == nullptr || !type->trivial || type->size != value.bytes.size()) {
    appendBytes(out, value.bytes);
    return;
  }
  Kel::AnyValue place(*type);
  std::memcpy(place.get(), value.bytes.data(), value.bytes.size());
  type->append(out, place.get());
}

}  // namespace

void appendValue(std::string& out, const Lumo::RecordedValue& value) {
  switch (value.type->kind) {
    case Lumo::Kind::text:
      out += value.bytes;
      break;
    case Lumo::Kind::natural:
      Kel::appendValue(out, unsignedOf(value.bytes));
      break;
    case Lumo::Kind::integer:
      Kel::appendValue(out, signedOf(value.bytes));
      break;
    case Lumo::Kind::boolean:
      Kel::appendValue(out, unsignedOf(value.bytes) != 0);
      break;
    case Lumo::Kind::real:
      Kel::appendValue(out, realOf(value.bytes));
      break;
    case Lumo::Kind::enumeration:
      if (const std::uint64_t ordinal = unsignedOf(value.bytes);
          ordinal < value.type->labels.size()) {
        out += value.type->labels[ordinal];
      } else {
        appendTyped(out, value);
      }
      break;
    case Lumo::Kind::bytes:
      appendTyped(out, value);
      break;
  }
}

void appendMessage(std::string& out, const Lumo::Record& record) {
  out.append(record.site->scope).append(record.site->form);
  auto value = record.values.begin();
  for (const Lumo::Piece& piece : record.site->pieces) {
    if (piece.value == nullptr) {
      out += piece.literal;
    } else {
      const std::size_t from = out.size();
      appendValue(out, *value++);
      Kel::TextTrace::escapeFrom(out, from);
    }
  }
}

void appendTextLine(std::string& out, const Lumo::Record& record) {
  std::string message;
  appendMessage(message, record);
  Kel::TextTrace::appendLine(
      out, {record.seconds, record.site->facility, record.site->level, record.site->file,
            record.site->line, record.site->handler(), message});
}

}  // namespace Pario
