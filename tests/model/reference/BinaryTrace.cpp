#include "model/reference/BinaryTrace.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "Kel/ValueType.h"

namespace Reference {
namespace {

const Kel::ValueType* typeNamed(std::string_view name) {
  static const auto kTypes = [] {
    std::map<std::string_view, const Kel::ValueType*> types;
    Kel::forEachValueType(
        [](void* to, const Kel::ValueType& type) {
          (*static_cast<decltype(types)*>(to))[type.name] = &type;
        },
        &types);
    return types;
  }();
  const auto found = kTypes.find(name);
  return found == kTypes.end() ? nullptr : found->second;
}

void append(Text& out, const Lumo::RecordedValue& value) {
  if (value.type->kind == Lumo::Kind::text) {
    out += value.bytes;
    return;
  }
  if (value.type->kind == Lumo::Kind::boolean) {
    out += value.bytes.front() != 0 ? "true" : "false";
    return;
  }
  // Anything else is memory, of a value that may be copied as such.
  const Kel::ValueType* const type = typeNamed(value.type->name);
  if (type == nullptr || !type->trivial || type->size != value.bytes.size()) {
    out.append("a ").append(value.type->name);
    return;
  }
  Kel::AnyValue copy(*type);
  std::memcpy(copy.get(), value.bytes.data(), value.bytes.size());
  type->append(out, copy.get());
}

}  // namespace

BinaryTrace::BinaryTrace() {
  Text why;
  ring_ = Lumo::TraceFile::inMemory(8U << 20U, 2, why);
  if (!ring_) {
    std::fprintf(stderr, "no memory for the binary trace: %s\n", why.c_str());
    std::abort();
  }
  Lumo::defaultHandleIs(ring_.get());
}

BinaryTrace::~BinaryTrace() { Lumo::defaultHandleIs(nullptr); }

Text BinaryTrace::lines() const {
  Text out;
  const bool whole = Lumo::forEachRecord(
      ring_->memory(), ring_->segmentSize(), Lumo::siteOf, [&out](const Lumo::Record& record) {
        const Lumo::Site& site = *record.site;
        out.append(std::to_string(site.level)).append(" ").append(site.scope).append(site.form);
        auto value = record.values.begin();
        for (const Lumo::Piece& piece : site.pieces) {
          piece.value == nullptr ? static_cast<void>(out += piece.literal) : append(out, *value++);
        }
        out += "\n";
      });
  return whole && ring_->discarded() == 0 ? out : out + "(records are missing)\n";
}

}  // namespace Reference
