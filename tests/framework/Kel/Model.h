#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "Kel/Attributes.h"
#include "Kel/Hash.h"

/// A small model with an attribute of every kind.
namespace Model {

enum class Type : std::uint16_t { leaf, part, step, whole, twin };
const Kel::Module& kelModule(Type type);

/// A key that keeps its collection sorted.
struct Rank {
  static constexpr bool kelOrdered = true;
  std::uint32_t value = 0;
  constexpr std::uint32_t hash() const noexcept { return Kel::hashOfNumber(value); }
  constexpr auto operator<=>(const Rank&) const noexcept = default;
};
void kelAppend(std::string& out, Rank rank);
bool kelParse(std::string_view text, Rank& rank, std::string& why);

}  // namespace Model

template <>
const Kel::ValueType& Kel::valueTypeOf<Model::Rank>();

namespace Model {

class Leaf final : public Kel::Entity<Leaf, Type::leaf> {
 public:
  static constexpr const char* kelTypeName() { return "Model::Leaf"; }
  KEL_ATTR(130, weight, std::uint32_t)
};

class Part final : public Kel::Entity<Part, Type::part> {
 public:
  static constexpr const char* kelTypeName() { return "Model::Part"; }
  explicit Part(const Kel::String& name) : name_(name) {}
  KEL_CONST(129, name, Kel::String)
  KEL_ATTR(130, weight, std::uint32_t)
};

class Step final : public Kel::Entity<Step, Type::step> {
 public:
  static constexpr const char* kelTypeName() { return "Model::Step"; }
  explicit Step(Rank rank) : rank_(rank) {}
  KEL_CONST(129, rank, Rank)
};

class Whole final : public Kel::Entity<Whole, Type::whole> {
 public:
  static constexpr const char* kelTypeName() { return "Model::Whole"; }
  static Brix::Ptr<Whole> WholeIs(const Kel::String& name = "whole") { return create(name); }
  explicit Whole(const Kel::String& name) : name_(name) {}

  // Not in the order of the ids, and with those at both ends of the window.
  KEL_ATTR(300, last, bool)
  KEL_CONST(128, name, Kel::String)
  KEL_SET(140, number, std::uint32_t)
  KEL_MAP(141, label, of, Kel::String, text, Kel::String)
  KEL_ENTRY(142, part, name, Part)
  KEL_ENTRY(143, step, rank, Step)
  KEL_SINGLE(144, leaf, Leaf)
  KEL_ATTR(131, time, Kel::Seconds)
  KEL_ATTR(132, text, Kel::String)
  KEL_ATTR(130, count, std::uint32_t)
};

/// The same attributes as Part.
class Twin final : public Kel::Entity<Twin, Type::twin> {
 public:
  static constexpr const char* kelTypeName() { return "Model::Twin"; }
  explicit Twin(const Kel::String& name) : name_(name) {}
  KEL_CONST(129, name, Kel::String)
  KEL_ATTR(130, weight, std::uint16_t)
};

}  // namespace Model
