// Documents that are refused: exit code 2, the place named, nothing on standard output.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "host/Running.h"

namespace HostTests {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// A document with a mark (the character @) before the place that the error has to name.
struct Bad {
  const char* name;
  std::string document;
  const char* message;
  const char* path = nullptr;  ///< null: not looked at
};

std::string inPolicySet(const std::string& members) {
  return R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1", )" + members + "}]}}";
}
std::string inPolicy(const std::string& members) {
  return inPolicySet(R"("policy": [{"vrf-name": "red", )" + members + "}]");
}
std::string inOrigin(const std::string& members) {
  return inPolicy(R"("rule": [{"priority": 20000, "origin": [{"name": "web", )" + members + "}]}]");
}
std::string inMatch(const std::string& members) {
  return inOrigin(R"("match": {)" + members + "}");
}
std::string inRecord(const std::string& members) {
  return R"({"vela-policy-monitor:status": {"device-policy-list": [{"device-name": "fw1", )" +
         members + "}]}}";
}
std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

const std::string kPolicySet = "/vela-l3:policy-source/policy-set[device-name='fw1']";

const std::vector<Bad> kBad{
    // Syntax.
    {"EmptyFile", "@", "the document is empty; expected an object"},
    {"NothingButBlanks", "@ \n \n", "the document is empty; expected an object"},
    {"TruncatedInAnObject", "{\n  \"vela-l3:policy-source\": {@\n",
     "the document ends inside the object that begins at line 2, column 28"},
    {"TruncatedInAnArray", R"({"vela-l3:policy-source": {"policy-set": [@)",
     "the document ends inside the array that begins at line 1, column 42"},
    {"TruncatedInText", R"({"vela-l3:policy-source": {"policy-set": [{@"device-na)",
     "this text has no closing quote on its line"},
    {"LineBreakInText", "{\"vela-l3:policy-source\": {@\"policy\n-set\": []}}",
     "this text has no closing quote on its line"},
    {"NotUtf8", inOrigin("\"tags\": \"a@\xff\""), "the byte 0xFF is no UTF-8 here"},
    {"OverlongUtf8", inOrigin("\"tags\": \"a@\xc0\xaf\""), "the byte 0xC0 is no UTF-8 here"},
    {"HalfOfASurrogatePairInUtf8", inOrigin("\"tags\": \"@\xed\xa0\x80\""),
     "the byte 0xED is no UTF-8 here"},
    {"NulByte", inOrigin(std::string("\"tags\": \"a@") + '\0' + "b\""), "text must not hold NUL"},
    {"NulEscape", inOrigin(R"("tags": @"a\u0000b")"), "text must not hold NUL"},
    {"ControlByte", inOrigin("\"tags\": \"a@\x1b[1m\""), "the control byte 0x1B in text"},
    {"ControlEscape", inOrigin(R"("tags": @"a\u001b")"), "text must not hold control characters"},
    {"NoCharacterEscape", inOrigin(R"("tags": @"a\uffff")"), "that are no characters"},
    {"NoCharacterOfAHigherPlane", inOrigin(R"("tags": @"\ud83f\udffe")"), "that are no characters"},
    {"HalfOfASurrogatePair", inOrigin(R"("tags": "@\ud800")"), "no JSON escape"},
    {"UnknownEscape", inOrigin(R"("tags": "@\x41")"), "no JSON escape"},
    {"TextBehindTheEnd", "{}\n@{}", "the document has ended before this"},
    {"BraceTooMany", "{}@}", "the document has ended before this"},
    {"MissingComma", R"({"vela-l3:policy-source": {} @"vela-policy-monitor:status": {}})",
     "found text; expected a comma or the closing brace }"},
    {"CommaBehindTheLastMember", R"({"vela-l3:policy-source": {},@})",
     "a comma stands before this brace"},
    {"CommaBehindTheLastEntry", inMatch(R"("l3-app": [6,@])"),
     "a comma stands before this bracket"},
    {"WrongBracket", inMatch(R"("l3-app": [6@})"), "expected a comma or the closing bracket ]"},
    {"ColonBehindAKey",
     R"({"vela-l3:policy-source":{"policy-set":[{"device-name":"fw1","policy":[{"vrf-name":"n","rule":)"
     R"([{"priority":20000,"origin":[{"name":"w"@:[1]}}]}]}]}]}})",
     "found ':'; expected a comma or the closing brace }"},
    {"ColonBehindAText", inOrigin(R"("tags": "a" @: [1]})"),
     "found ':'; expected a comma or the closing brace }"},
    {"MissingColon", R"({"vela-l3:policy-source" @{}})", "found '{'; expected a colon"},
    {"MissingValue", R"({"vela-l3:policy-source": @})", "found '}'; expected a value"},
    {"NameWithoutQuotes", "{@policy-source: {}}", "expected the name of a member in double quotes"},
    {"SingleQuotes", "{@'vela-l3:policy-source': {}}", "text stands in double quotes"},
    {"Comment", "{@// rules\n}", "JSON has no comments"},
    {"MisspeltLiteral", inOrigin(R"("log": @True)"), "\"True\" is no JSON value"},
    {"LongerLiteral", inOrigin(R"("log": @truely)"), "\"truely\" is no JSON value"},
    {"LeadingZero", inMatch(R"("l3-app": [@06])"), "\"06\" is no JSON number"},
    {"NoNumber", inMatch(R"("l3-app": [@6a])"), "\"6a\" is no JSON number"},
    // Not an object, or not what is expected at a place.
    {"AnArray", "@[]", "expected an object, found an array"},
    {"AText", "@\"vela-l3:policy-source\"", "expected an object, found text"},
    {"ANumber", "@7", "expected an object, found a number"},
    {"Null", "@null", "expected an object, found null"},
    {"TenThousandLevelsOfArrays", "@" + repeated("[", 10000) + repeated("]", 10000),
     "expected an object, found an array"},
    {"TenThousandLevelsInAList",
     R"({"vela-l3:policy-source": {"policy-set": [@)" + repeated("[", 10000) +
         repeated("]", 10000) + "]}}",
     "expected an object, found an array", "/vela-l3:policy-source/policy-set[1]"},
    {"TenThousandLevelsOfObjects",
     R"({"vela-l3:policy-source": {@"a": )" + repeated(R"({"a": )", 10000) + "1" +
         repeated("}", 10000) + "}}",
     "\"a\" is unknown in policy-source; expected policy-set"},
    {"TenThousandOpenLevels",
     R"({"vela-l3:policy-source": {"policy-set": [)" + repeated("[", 10000) + "@",
     "the document ends inside the array that begins at line 1, column 10042"},
    {"ContainerIsNull", R"({"vela-l3:policy-source": @null})", "expected an object, found null"},
    {"ListIsAnObject", R"({"vela-l3:policy-source": {"policy-set": @{}}})",
     "expected an array, found an object", "/vela-l3:policy-source/policy-set"},
    {"EntryIsAText", R"({"vela-l3:policy-source": {"policy-set": [@"fw1"]}})",
     "expected an object, found text"},
    {"PresenceContainerIsAnArrayOfNull", inOrigin(R"("match": @[null])"),
     "expected an object, found an array"},
    {"LeafIsAnArray", inOrigin(R"("action": @["drop"])"), "expected text, found an array"},
    {"LeafIsAnObject", inOrigin(R"("action": @{"drop": true})"), "expected text, found an object"},
    {"LeafIsNull", inOrigin(R"("tags": @null)"), "expected text, found null"},
    {"EmptyTypeSpelling", inOrigin(R"("log": @[null])"), "expected true or false, found an array"},
    {"LeafListIsAScalar", inMatch(R"("dst-ip": @"10.0.0.0/8")"), "expected an array, found text"},
    {"NullInALeafList", inMatch(R"("dst-ip": [@null])"), "expected text, found null",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"
     "/rule[priority='20000']/origin[name='web']/match/dst-ip[1]"},
    {"NumberAsText", inMatch(R"("l3-app": [@"6"])"), "found text; write 6 without quotes"},
    {"BooleanAsText", inOrigin(R"("log": @"true")"), "found text; write true without quotes"},
    {"BooleanAsNumber", inOrigin(R"("log": @1)"), "expected true or false, found a number"},
    {"TextAsNumber", inOrigin(R"("tags": @12)"), "text stands in quotes: \"12\""},
    {"DecimalAsNumber", inPolicy(R"("timestamp": @12.5)"), "a decimal stands in quotes: \"12.5\"",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']/timestamp"},
    // Names.
    {"UnknownContainer", R"({@"vela-l3:policy-sources": {}})",
     "there is no container \"vela-l3:policy-sources\"; expected vela-l3:policy-source, "
     "vela-l3:service-device-source or vela-policy-monitor:status; did you mean "
     "\"vela-l3:policy-source\"?"},
    {"ContainerWithoutItsModule", R"({@"policy-source": {}})",
     "lacks its module at the top of a document; write \"vela-l3:policy-source\""},
    {"ContainerOfTheWrongModule", R"({@"vela-l3:status": {}})", "there is no container"},
    {"Version2", R"({@"vela-l3v2:policy-source": {}})",
     "is state that the translation alone writes; leave it out"},
    {"Version2ServiceDevices", R"({@"vela-l3v2:service-device-source": {}})",
     "is state that the translation alone writes; leave it out"},
    {"FlagIsANumber", inRecord(R"("policy-converge": @1)"),
     "expected true or false, found a number",
     "/vela-policy-monitor:status/device-policy-list[device-name='fw1']/policy-converge"},
    {"FlagTwice", inRecord(R"("policy-converge": true, @"policy-converge": true)"),
     "this object has had \"policy-converge\" already"},
    {"UnknownNode", inMatch(R"(@"dst-ipp": [])"),
     "\"dst-ipp\" is unknown in match; did you mean \"dst-ip\"?",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"
     "/rule[priority='20000']/origin[name='web']/match"},
    {"UnknownNodeWithoutALikelyOne", inPolicySet(R"(@"colour": "blue")"),
     "\"colour\" is unknown in policy-set; expected device-name or policy", kPolicySet.c_str()},
    {"NodeOfVersion2", inOrigin(R"(@"log-enabled": true)"), "\"log-enabled\" is unknown in origin"},
    {"AttributeWithoutANode", inOrigin(R"(@"description": "x")"),
     "\"description\" is unknown in origin"},
    {"WrongModuleBelow", inPolicySet(R"(@"vela-l3v2:policy": [])"),
     "\"vela-l3v2:policy\" names the wrong module; here it is vela-l3"},
    {"Metadata", inPolicySet(R"(@"@policy": [])"), "\"@policy\" is unknown in policy-set"},
    {"UnknownFieldOfARecord", inMatch(R"("dst-l4-app": [{"port": 1, "protocol": 6, @"prot": 6}])"),
     "\"prot\" is unknown in dst-l4-app; did you mean \"port\"?"},
    // Values.
    {"PriorityBelowTheRange", inPolicy(R"("rule": [{"priority": @9999}])"),
     "priority 9999 is out of range; expected 10000 to 30000",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']/rule[1]/"
     "priority"},
    {"PriorityAboveTheRange", inPolicy(R"("rule": [{"priority": @30001}])"),
     "priority 30001 is out of range; expected 10000 to 30000"},
    {"NegativePriority", inPolicy(R"("rule": [{"priority": @-20000}])"),
     "expected 0 to 4294967295"},
    {"PriorityWithAFraction", inPolicy(R"("rule": [{"priority": @20000.5}])"),
     "\"20000.5\" is not a whole number"},
    {"PriorityBeyond32Bits", inPolicy(R"("rule": [{"priority": @4294987296}])"), "is too large"},
    {"VrfNameOf101Bytes",
     inPolicySet(R"("policy": [{"vrf-name": @")" + std::string(101, 'v') + "\"}]"),
     "the name has 101 bytes; expected at most 100 bytes",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[1]/vrf-name"},
    {"VrfNameOf60CharactersOfTwoBytes",
     inPolicySet(R"("policy": [{"vrf-name": @")" + repeated("\xc3\xa9", 60) + "\"}]"),
     "the name has 120 bytes; expected at most 100 bytes"},
    {"VrfNameOf101BytesInARecord",
     inRecord(R"("net-vrf-name-by-vrf": [{"vrf-name": @")" + std::string(101, 'v') + "\"}]"),
     "the name has 101 bytes; expected at most 100 bytes"},
    {"EmptyVrfName", inPolicySet(R"("policy": [{"vrf-name": @""}])"),
     "an empty vrf-name; expected at least 1 character"},
    {"EmptyDeviceName", R"({"vela-l3:policy-source": {"policy-set": [{"device-name": @""}]}})",
     "an empty device-name; expected at least 1 character"},
    {"EmptyOriginName", inPolicy(R"("rule": [{"priority": 20000, "origin": [{"name": @""}]}])"),
     "an empty name"},
    {"EmptyVrfNameInARecord", inRecord(R"("net-vrf-name-by-vrf": [{"vrf-name": @""}])"),
     "an empty vrf-name"},
    {"PrefixWithoutALength", inMatch(R"("src-ip": [@"10.0.0.0"])"), "such as 10.1.0.0/16"},
    {"PrefixTooLong", inMatch(R"("src-ip": ["10.0.0.0/8", @"10.0.0.0/33"])"), "33"},
    {"PrefixThatIsNone", inMatch(R"("src-ip": [@"any"])"), "expected an address, a slash",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"
     "/rule[priority='20000']/origin[name='web']/match/src-ip[1]"},
    {"AddressWithAZone",
     inMatch(R"("src-ip-range": [{"first": "fe80::1", "last": @"fe80::2%eth0"}])"), "expected"},
    {"PortTooLarge", inMatch(R"("dst-l4-app": [{"port": @65536, "protocol": 6}])"),
     "65536 is too large; expected 0 to 65535"},
    {"ProtocolTooLarge", inMatch(R"("l3-app": [@256])"), "256"},
    {"UnknownAction", inOrigin(R"("action": @"allow")"),
     "\"allow\" is unknown; expected forward, drop or redirect"},
    {"UnknownModifier", inOrigin(R"("policy-modifier": ["symmetric", @"statelss"])"),
     "\"statelss\" is unknown; expected symmetric or stateless"},
    {"UnknownInspection", inRecord(R"("traffic-inspection": @"local global")"), "global"},
    {"TimestampWithSevenDigits", inPolicy(R"("timestamp": @"1.2345678")"), "is not a time"},
    {"TimestampInWords", inPolicy(R"("timestamp": @"now")"), "\"now\" is not a time"},
    // Keys.
    {"MissingDeviceName", R"({"vela-l3:policy-source": {"policy-set": [@{"policy": []}]}})",
     "the key \"device-name\" is missing in this entry of policy-set",
     "/vela-l3:policy-source/policy-set[1]"},
    {"EmptyEntry", inPolicy(R"("rule": [@{}])"), "the key \"priority\" is missing"},
    {"MissingFieldOfARecord", inMatch(R"("dst-l4-app": [@{"port": 443}])"),
     "the key \"protocol\" is missing in this entry of dst-l4-app"},
    {"MissingKeyOfAMapping", inRecord(R"("net-vrf-name-by-vrf": [@{"net-vrf-name": "n"}])"),
     "the key \"vrf-name\" is missing in this entry of net-vrf-name-by-vrf"},
    {"DuplicateDevice",
     R"({"vela-l3:policy-source": {"policy-set": [{"device-name": "fw1"}, @{"device-name": "fw1"}]}})",
     "this entry is in the list already", kPolicySet.c_str()},
    {"DuplicateRule", inPolicy(R"("rule": [{"priority": 20000}, @{"priority": 2e4}])"),
     "this entry is in the list already"},
    {"DuplicateInALeafList", inMatch(R"("l3-app": [6, 17, @6])"), "6 is in the list already"},
    {"TwoSpellingsOfAPrefix", inMatch(R"("src-ip": ["10.1.2.3/8", @"10.0.0.0/8"])"),
     "10.0.0.0/8 is in the list already"},
    {"TwoOtherSpellingsOfAPrefix", inMatch(R"("src-ip": ["10.0.0.0/8", @"10.1.2.3/8"])"),
     "10.1.2.3/8 is 10.0.0.0/8, which is in the list already",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"
     "/rule[priority='20000']/origin[name='web']/match/src-ip[.='10.0.0.0/8']"},
    {"DuplicateRecord",
     inMatch(R"("dst-l4-app": [{"port": 1, "protocol": 6}, @{"protocol": 6, "port": 1}])"),
     "this entry is in the list already",
     "/vela-l3:policy-source/policy-set[device-name='fw1']/policy[vrf-name='red']"
     "/rule[priority='20000']/origin[name='web']/match/dst-l4-app[port='1'][protocol='6']"},
    {"DuplicateMapping",
     inRecord(
         R"("net-vrf-name-by-vrf": [{"vrf-name": "v"}, @{"vrf-name": "v", "net-vrf-name": "n"}])"),
     "this entry is in the list already"},
    // Members that come twice.
    {"DuplicateContainer", R"({"vela-l3:policy-source": {}, @"vela-l3:policy-source": {}})",
     "this object has had \"vela-l3:policy-source\" already"},
    {"DuplicateMember", inOrigin(R"("action": "drop", @"action": "drop")"),
     "this object has had \"action\" already"},
    {"DuplicateMemberInTwoSpellings", inOrigin(R"("log": true, @"vela-l3:log": true)"),
     "this object has had \"vela-l3:log\" already"},
    {"DuplicateKey", inPolicySet(R"(@"device-name": "fw1")"),
     "this object has had \"device-name\" already"},
    {"DuplicateFieldOfARecord",
     inMatch(R"("dst-l4-app": [{"port": 1, "protocol": 6, @"port": 2}])"),
     "this object has had \"port\" already"},
};

class BadDocument : public testing::TestWithParam<Bad> {};

TEST_P(BadDocument, IsRefusedWithItsPlace) {
  const Bad& bad = GetParam();
  const std::size_t mark = bad.document.find('@');
  ASSERT_NE(mark, std::string::npos);
  const std::string before = bad.document.substr(0, mark);
  const auto line = 1 + std::ranges::count(before, '\n');
  const std::size_t column = mark - (before.rfind('\n') + 1) + 1;  // npos + 1 is 0

  const Folder folder;
  const std::string file = folder.write("site.json", before + bad.document.substr(mark + 1));
  const Outcome outcome = runVpm({"translate", file});
  const std::string headline = outcome.err.substr(0, outcome.err.find('\n'));

  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(headline, StartsWith(file + ":" + std::to_string(line) + ":" +
                                   std::to_string(column) + ": error: "));
  EXPECT_THAT(headline, HasSubstr(bad.message));
  EXPECT_THAT(outcome.err, HasSubstr("nothing was translated\n"));
  if (bad.path != nullptr) {
    EXPECT_THAT(outcome.err, HasSubstr("\n        at " + std::string(bad.path) + "\n"));
  }
}

INSTANTIATE_TEST_SUITE_P(, BadDocument, testing::ValuesIn(kBad),
                         [](const auto& each) { return each.param.name; });

TEST(BadDocuments, ShowTheLineWithACaretAndThePath) {
  const Folder folder;
  const std::string file = folder.write("site.json",
                                        "{\n"
                                        "  \"vela-l3:policy-source\": {\n"
                                        "    \"policy-set\": [\n"
                                        "      { \"device-name\": \"fw1\", \"polcy\": [] }\n"
                                        "    ]\n"
                                        "  }\n"
                                        "}\n");
  EXPECT_EQ(runVpm({"translate", file}).err,
            file +
                ":4:31: error: \"polcy\" is unknown in policy-set; did you mean \"policy\"?\n"
                "    4 |       { \"device-name\": \"fw1\", \"polcy\": [] }\n"
                "      |                               ^~~~~~~\n"
                "        at /vela-l3:policy-source/policy-set[device-name='fw1']\n"
                "vpm: 1 error; nothing was translated\n");
}

TEST(BadDocuments, CountColumnsInCharacters) {
  const Folder folder;
  const std::string file =
      folder.write("site.json",
                   "{\"vela-l3:policy-source\": {\"policy-set\": [{\"device-name\": "
                   "\"\xc3\xa9\xe2\x82\xac\", \"x\": 1}]}}");
  EXPECT_THAT(runVpm({"translate", file}).err, StartsWith(file + ":1:65: error: "));
}

TEST(BadDocuments, AreSaidOfWholeNotOnlyTheirFirstError) {
  const Folder folder;
  const std::string file =
      folder.write("site.json", inMatch(R"("l3-app": [256, 6], "dst-ip": ["x"], "colour": 1)"));
  const std::string err = runVpm({"translate", file}).err;
  EXPECT_THAT(err, HasSubstr("256"));
  EXPECT_THAT(err, HasSubstr("dst-ip[1]"));
  EXPECT_THAT(err, HasSubstr("\"colour\" is unknown in match"));
  EXPECT_THAT(err, HasSubstr("vpm: 3 errors; nothing was translated\n"));
}

TEST(BadDocuments, AreCheckedBelowAnEntryWhoseKeyIsWrong) {
  const Folder folder;
  const std::string file = folder.write(
      "site.json", inPolicy(R"("rule": [{"priority": 1, "origin": [{"name": "a", "log": 2}]}])"));
  const std::string err = runVpm({"translate", file}).err;
  EXPECT_THAT(err, HasSubstr("priority 1 is out of range"));
  EXPECT_THAT(err, HasSubstr("/rule[1]/origin[name='a']/log\n"));
}

TEST(BadDocuments, SayWhatIsWrongBeforeAFaultOfSyntaxAndNothingBehindIt) {
  const Folder folder;
  const std::string file =
      folder.write("site.json", R"({"vela-l3:policy-source": {"a": 1, "b": [}, "c": 2, "d": 3})");
  const std::string err = runVpm({"translate", file}).err;
  EXPECT_THAT(err, HasSubstr("\"a\" is unknown"));
  EXPECT_THAT(err, HasSubstr(":1:42: error: found '}'; expected a value"));
  EXPECT_THAT(err, testing::Not(HasSubstr("\"c\" is unknown")));
}

TEST(BadDocuments, AreCheckedForSyntaxWhereNothingIsRead) {
  const Folder folder;
  const std::string file = folder.write("site.json", inMatch(R"("colour": [6}, "l3-app": [256])"));
  const std::string err = runVpm({"translate", file}).err;
  EXPECT_THAT(err, HasSubstr("\"colour\" is unknown in match"));
  EXPECT_THAT(err, HasSubstr("found '}'; expected a comma or the closing bracket ]"));
  EXPECT_THAT(err, HasSubstr("vpm: 2 errors; "));
}

TEST(BadDocuments, GiveAtMostTwentyErrorsInARun) {
  const Folder folder;
  std::string devices;
  for (int i = 0; i < 15; ++i) {
    devices += std::string(i == 0 ? "" : ",") + "{\"x\": 1}";  // two errors each
  }
  const std::string document = R"({"vela-l3:policy-source": {"policy-set": [)" + devices + "]}}";
  const Outcome outcome = runVpm({"translate", folder.write("a.json", document),
                                  folder.write("b.json", document), folder.path("missing.json")});
  EXPECT_EQ(outcome.exitCode, 2);
  std::size_t errors = 0;
  for (std::size_t at = 0; (at = outcome.err.find(": error: ", at)) != std::string::npos; ++at) {
    ++errors;
  }
  EXPECT_EQ(errors, 20U);
  EXPECT_THAT(outcome.err, HasSubstr("vpm: 20 errors; there may be more; nothing was translated"));
}

TEST(BadDocuments, DoNotSendControlCharactersToTheTerminal) {
  const Folder folder;
  const std::string file =
      folder.write("site.json", inPolicySet("\"\\u001b\": 1, \"\x7f\x7f\": 2, \"k\": \"\x1b[2J\""));
  for (const char c : runVpm({"translate", file}).err) {
    EXPECT_TRUE(c == '\n' || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f));
  }
}

TEST(BadDocuments, ThatAreMissingOrFoldersAreNamed) {
  const Folder folder;
  const Outcome missing = runVpm({"translate", folder.path("missing.json")});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_EQ(missing.out, "");
  EXPECT_THAT(missing.err, StartsWith(folder.path("missing.json") +
                                      ": error: cannot be read: No such file or directory\n"));
  const Outcome aFolder = runVpm({"translate", folder.path("")});
  EXPECT_EQ(aFolder.exitCode, 2);
  EXPECT_EQ(aFolder.out, "");
  EXPECT_THAT(aFolder.err,
              StartsWith(folder.path("") + ": error: is a folder; expected a document\n"));
}

}  // namespace
}  // namespace HostTests
