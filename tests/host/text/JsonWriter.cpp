#include "text/JsonWriter.h"

#include <gtest/gtest.h>

namespace HostTests {
namespace {

using Host::JsonWriter;
using Host::Layout;

/// {"a": {}, "b": [1, 2], "c": [{"d": "x"}]} in a layout.
std::string sample(Layout layout) {
  Host::TextSink sink;
  JsonWriter json(sink, layout);
  const std::uint8_t one = 1;
  const std::uint8_t two = 2;
  const auto& type = Kel::valueTypeOf<std::uint8_t>();
  json.openObject();
  json.name("a");
  json.openObject();
  json.closeObject();
  json.name("b");
  json.openScalars();
  json.value(type, &one);
  json.value(type, &two);
  json.closeScalars();
  json.name("c");
  json.openArray();
  json.openRecord();
  json.name("d");
  json.text("x");
  json.closeRecord();
  json.closeArray();
  json.closeObject();
  json.endLine();
  return sink.text();
}

TEST(JsonWriter, WritesForPeople) {
  EXPECT_EQ(sample(Layout::pretty), R"({
  "a": {},
  "b": [1, 2],
  "c": [
    { "d": "x" }
  ]
}
)");
}

TEST(JsonWriter, WritesForProgramsOnOneLine) {
  EXPECT_EQ(sample(Layout::compact), "{\"a\":{},\"b\":[1,2],\"c\":[{\"d\":\"x\"}]}\n");
}

TEST(JsonWriter, WritesOneLineAfterTheOther) {
  Host::TextSink sink;
  JsonWriter json(sink, Layout::compact);
  for (const bool value : {true, false}) {
    json.openObject();
    json.name("equal");
    json.boolean(value);
    json.name("line");
    json.number(7);
    json.closeObject();
    json.endLine();
  }
  EXPECT_EQ(sink.text(), "{\"equal\":true,\"line\":7}\n{\"equal\":false,\"line\":7}\n");
}

}  // namespace
}  // namespace HostTests
