#include "tracing/TraceMetadata.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

#include "tracing/TraceError.h"

namespace HostTests {
namespace {

using Lumo::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr Lumo::Uuid kUuid{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x46, 0x77,
                           0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
constexpr std::array<std::string_view, 2> kLabels{"say \"no\"", "back\\slash"};
constexpr Lumo::ValueType kText{Kind::text, 0, "Kel::String"};
constexpr Lumo::ValueType kByte{Kind::natural, 1, "uint8_t"};
constexpr Lumo::ValueType kLong{Kind::integer, 8, "int64_t"};
constexpr Lumo::ValueType kBool{Kind::boolean, 1, "bool"};
constexpr Lumo::ValueType kReal{Kind::real, 8, "Kel::Seconds"};
constexpr Lumo::ValueType kNamed{Kind::enumeration, 1, "Test::Named", kLabels};
constexpr Lumo::ValueType kPlain{Kind::enumeration, 2, "Test::Plain"};
constexpr Lumo::ValueType kBytes{Kind::bytes, 18, "Test::Bytes"};

/// The metadata of all sites of this process, with one that has all kinds of values as the last.
std::string metadataWithAllKinds() {
  Lumo::Site site;
  site.facility = "Facility";
  site.level = 8;
  site.file = "folder/Source.cpp";
  site.line = 41;
  site.scope = "void Space::Class::";
  site.form = "handleX(const String&)";
  site.pieces = {{" 100% \"\n text: ", nullptr},
                 {"", &kText},
                 {"", &kByte},
                 {" long ", nullptr},
                 {"", &kLong},
                 {" bool ", nullptr},
                 {"", &kBool},
                 {"", &kReal},
                 {"", &kNamed},
                 {"", &kPlain},
                 {"", &kBytes}};
  return Lumo::metadataText(kUuid, Lumo::registerSite(site).id + 1);
}

std::string refusal(const std::string& text) {
  try {
    const Host::TraceMetadata metadata(text, "t/metadata");
    return "";
  } catch (const Host::TraceError& error) {
    return error.what();
  }
}

TEST(TraceMetadata, GivesBackWhatTheWriterKnewOfASite) {
  const Host::TraceMetadata metadata(metadataWithAllKinds(), "metadata");
  EXPECT_EQ(metadata.uuid(), kUuid);
  EXPECT_EQ(metadata.processId(), getpid());
  const Host::TraceSite& found = metadata.sites().back();
  EXPECT_EQ(found.site.id + 1, metadata.sites().size());
  EXPECT_EQ(found.site.facility, "Facility");
  EXPECT_EQ(found.site.level, 8U);
  EXPECT_EQ(found.site.file, "Source.cpp");
  EXPECT_EQ(found.site.line, 41U);
  EXPECT_EQ(found.site.handler(), "handleX");
  EXPECT_EQ(found.site.format(),
            "void Space::Class::handleX(const String&) 100%% \"\n text: %s%s long %s bool "
            "%s%s%s%s%s");
  EXPECT_EQ(found.className, "Space::Class");
  EXPECT_EQ(found.function, "handleX(const String&)");
  EXPECT_THAT(found.names, ElementsAre("100_text", "value", "long", "bool", "value_2", "value_3",
                                       "value_4", "value_5"));
}

TEST(TraceMetadata, GivesBackTheTypesOfTheValues) {
  const Host::TraceMetadata metadata(metadataWithAllKinds(), "metadata");
  const std::array<const Lumo::ValueType*, 8> written{&kText, &kByte,  &kLong,  &kBool,
                                                      &kReal, &kNamed, &kPlain, &kBytes};
  std::size_t next = 0;
  for (const Lumo::Piece& piece : metadata.sites().back().site.pieces) {
    if (piece.value != nullptr) {
      ASSERT_LT(next, written.size());
      EXPECT_EQ(piece.value->kind, written[next]->kind) << next;
      EXPECT_EQ(piece.value->size, written[next]->size) << next;
      EXPECT_EQ(piece.value->name, written[next]->name) << next;
      if (written[next] == &kNamed) {
        EXPECT_THAT(piece.value->labels, ElementsAre(kLabels[0], kLabels[1]));
      }
      ++next;
    }
  }
  EXPECT_EQ(next, written.size());
}

TEST(TraceMetadata, AreRefusedWhereverTheyAreCutOff) {
  const std::string whole = metadataWithAllKinds();
  ASSERT_EQ(refusal(whole), "");
  const std::size_t last = whole.rfind(';');  // behind it are blanks
  for (std::size_t size = 0; size < last; size += 1 + last / 300) {
    EXPECT_THAT(refusal(whole.substr(0, size)), StartsWith("t/metadata:")) << size;
  }
}

TEST(TraceMetadata, ThoseOfAnotherTracerAreRefusedWithTheLine) {
  EXPECT_THAT(refusal("/* CTF 1.8 */\n\nenv {\n  hostname = \"x\";\n};\nevent {\n  name = \"y\";"),
              HasSubstr("t/metadata:7: expected \"id\", found \"name\""));
}

}  // namespace
}  // namespace HostTests
