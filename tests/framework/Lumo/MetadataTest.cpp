#include <gtest/gtest.h>

#include <array>
#include <string_view>

#include "Lumo/Metadata.h"
#include "TraceTools.h"

namespace {

using Lumo::Kind;

constexpr Lumo::Uuid kUuid{0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x46, 0x77,
                           0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
constexpr std::array<std::string_view, 3> kActions{"forward", "drop", "redirect"};

constexpr Lumo::ValueType kByte{Kind::natural, 1, "uint8_t"};
constexpr Lumo::ValueType kLong{Kind::integer, 8, "int64_t"};
constexpr Lumo::ValueType kBool{Kind::boolean, 1, "bool"};
constexpr Lumo::ValueType kReal{Kind::real, 8, "Kel::Seconds"};
constexpr Lumo::ValueType kAction{Kind::enumeration, 1, "VelaL3::VelaAction", kActions};
constexpr Lumo::ValueType kPlainEnum{Kind::enumeration, 2, "Test::Plain"};
constexpr Lumo::ValueType kPrefix{Kind::bytes, 18, "Norv::IpGenPrefix"};

Lumo::Site site() {
  Lumo::Site made;
  made.facility = "VelaPolicyMonitor";
  made.level = 8;
  made.file = "Source.cpp";
  made.line = 41;
  made.scope = "void A::";
  made.form = "handleX(const String&)";
  return made;
}

const Lumo::Site& siteOfAllTypes() {
  Lumo::Site made = site();
  made.pieces = {{" Rule priority: ", nullptr},
                 {"", &LumoTest::kNumber},
                 {"", &kByte},
                 {" policy: ", nullptr},
                 {"", &LumoTest::kText},
                 {" policy: ", nullptr},
                 {"", &kLong},
                 {" on ", nullptr},
                 {"", &kBool},
                 {" at ", nullptr},
                 {"", &kReal},
                 {" event ", nullptr},
                 {"", &kAction},
                 {" plain ", nullptr},
                 {"", &kPlainEnum},
                 {" %\"\\ ", nullptr},
                 {"", &kPrefix}};
  static const Lumo::Site& registered = Lumo::registerSite(made);
  return registered;
}

TEST(Metadata, BeginsWithTheMarkByWhichReadersKnowTheFormat) {
  EXPECT_EQ(Lumo::metadataText(kUuid, 0).rfind("/* CTF 1.8 */", 0), 0U);
}

TEST(Metadata, HoldsTheUuidInItsTextForm) {
  EXPECT_NE(Lumo::metadataText(kUuid, 0).find("uuid = \"00112233-4455-4677-8899-aabbccddeeff\""),
            std::string::npos);
}

TEST(Metadata, DescribesASiteWithAFieldPerValueNamedAfterTheLiteralBeforeIt) {
  const Lumo::Site& all = siteOfAllTypes();
  const std::string text = Lumo::metadataText(kUuid, all.id + 1);
  const std::string id = std::to_string(all.id);
  EXPECT_NE(text.find("event {\n  id = " + id +
                      ";\n  stream_id = 0;\n"
                      "  name = \"void A::handleX(const String&) Rule priority: %s%s policy: %s "
                      "policy: %s on %s at %s event %s plain %s %%\\\"\\\\ %s\";\n"
                      "  loglevel = 8;\n"
                      "  fields := struct { u32 _Rule_priority; u8 _value; string _policy; "
                      "i64 _policy_2; enum : u8 { \"false\" = 0, \"true\" = 1 } _on; f64 _at; "
                      "enum : u8 { \"forward\" = 0, \"drop\" = 1, \"redirect\" = 2 } _event; "
                      "u16 _plain; u8 _value_2[18]; };\n};\n"),
            std::string::npos)
      << text;
}

TEST(Metadata, KeepsInTheEnvironmentWhatTheFormatHasNoPlaceFor) {
  const Lumo::Site& all = siteOfAllTypes();
  const std::string text = Lumo::metadataText(kUuid, all.id + 1);
  EXPECT_NE(
      text.find("site_" + std::to_string(all.id) +
                " = \"VelaPolicyMonitor|8|Source.cpp|41|handleX|uint32_t|uint8_t|Kel::String|"
                "int64_t|bool|Kel::Seconds|VelaL3::VelaAction|Test::Plain|Norv::IpGenPrefix\";\n"),
      std::string::npos)
      << text;
}

TEST(Metadata, LeavesOutSitesThatAreNotPublished) {
  const Lumo::Site& all = siteOfAllTypes();
  const std::string event = "event {\n  id = " + std::to_string(all.id) + ";";
  EXPECT_NE(Lumo::metadataText(kUuid, all.id + 1).find(event), std::string::npos);
  EXPECT_EQ(Lumo::metadataText(kUuid, all.id).find(event), std::string::npos);
}

TEST(Metadata, IsUnderstoodByTheReaderOfTheField) {
  const Lumo::Site& all = siteOfAllTypes();
  Lumo::Site control = site();
  control.pieces = {{" a\n\x7f? ", nullptr}, {"", &kBool}};
  Lumo::registerSite(control);  // a literal with control bytes must not break the file

  const LumoTest::Folder folder("metadata");
  const auto ring = LumoTest::openRing(folder.path());
  std::byte* at = ring->begin(all.id, 200, 1'000'000'000, 1.5);
  ASSERT_NE(at, nullptr);
  const auto append = [&at](const auto& value) {
    std::memcpy(at, &value, sizeof value);
    at += sizeof value;
  };
  append(std::uint32_t{20000});
  append(std::uint8_t{200});
  append(std::array<char, 4>{'w', 'e', 'b', '\0'});
  append(std::int64_t{-5});
  append(true);
  append(12.5);
  append(std::uint8_t{2});
  append(std::uint16_t{513});
  append(std::array<std::uint8_t, 18>{4, 10, 1});
  ring->finish(at);

  const LumoTest::Reading reading =
      LumoTest::readWithBabeltrace(folder.path(), "--clock-seconds --no-delta");
  EXPECT_EQ(reading.status, 0) << reading.errors;
  EXPECT_EQ(reading.errors, "");
  ASSERT_EQ(reading.lines.size(), 1U);
  EXPECT_EQ(
      reading.lines[0],
      "[1.000000000] void A::handleX(const String&) Rule priority: %s%s policy: "
      "%s policy: %s on %s at %s event %s plain %s %%\"\\ %s: { seconds = 1.5, subject = 0 }, "
      "{ Rule_priority = 20000, value = 200, policy = \"web\", policy_2 = -5, on = ( \"true\" : "
      "container = 1 ), at = 12.5, event = ( \"redirect\" : container = 2 ), plain = 513, "
      "value_2 = [ [0] = 4, [1] = 10, [2] = 1, [3] = 0, [4] = 0, [5] = 0, [6] = 0, [7] = 0, "
      "[8] = 0, [9] = 0, [10] = 0, [11] = 0, [12] = 0, [13] = 0, [14] = 0, [15] = 0, [16] = 0, "
      "[17] = 0 ] }");
}

}  // namespace
