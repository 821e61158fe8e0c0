#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Kel/Text.h"
#include "Kel/ValueType.h"

namespace ModelTests {

/// Goes through all 256 ordinals of an enumeration of one byte: those from 0 on print as `names`
/// and are read from them, all others print as their numbers, and numbers are not read. By the type
/// itself and by its descriptor.
template <class Enum>
void expectNames(const std::vector<std::string>& names, const std::string& expected) {
  const Kel::ValueType& type = Kel::valueTypeOf<Enum>();
  EXPECT_EQ(type.encoding, Kel::Encoding::string);
  EXPECT_EQ(type.size, 1);
  for (unsigned ordinal = 0; ordinal != 256; ++ordinal) {
    const bool named = ordinal < names.size();
    const std::string text = named ? names[ordinal] : std::to_string(ordinal);
    const auto value = static_cast<Enum>(ordinal);
    EXPECT_EQ(Kel::textOf(value), text);
    std::string appended;
    type.append(appended, &value);
    EXPECT_EQ(appended, text);

    const auto before = static_cast<Enum>(255 - ordinal);
    Enum read = before;
    Enum readByType = before;
    std::string why;
    EXPECT_EQ(Kel::parseValue(text, read, why), named) << text;
    EXPECT_EQ(type.parse(text, &readByType, why), named) << text;
    EXPECT_EQ(read, named ? value : before) << text;
    EXPECT_EQ(readByType, named ? value : before) << text;
    if (!named) {
      EXPECT_EQ(why, "\"" + text + "\" is unknown; expected " + expected);
      EXPECT_FALSE(Kel::parseValue(std::to_string(ordinal - names.size()), read, why));
    }
  }
}

}  // namespace ModelTests
