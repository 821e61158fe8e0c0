#pragma once

#include <string>

#include "Kel/TextTrace.h"
#include "Lumo/Records.h"

namespace [[using gnu: visibility("default")]] Pario {

/// Appends a value as messages have it, its control bytes as they are. Value types are found by
/// their names (Kel::forEachValueType); a value of a type that this process does not know is
/// printed as 0x and its bytes.
void appendValue(std::string& out, const Lumo::RecordedValue& value);

/// Appends the message of a record of the binary trace: the same bytes that the text trace wrote
/// for it.
void appendMessage(std::string& out, const Lumo::Record& record);

/// Appends the whole line, with its line break, that the text trace wrote for the record.
void appendTextLine(std::string& out, const Lumo::Record& record);

}  // namespace Pario
