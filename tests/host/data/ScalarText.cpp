#include "data/ScalarText.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace HostTests {
namespace {

using Host::JsonKind;
using Host::Node;

/// The leaves and leaf-lists below `node` whose values are of an enumeration, by path.
void collect(const Node& node, const std::string& path, std::map<std::string, const Node*>& found) {
  const std::string here = path + "/" + node.name;
  const std::string type = node.type == nullptr ? "" : node.type->name;
  if (type.ends_with("::VelaAction") || type.ends_with("::VelaPolicyModifier")) {
    found.emplace(here, &node);
  }
  for (const Node* const child : node.children) {
    collect(*child, here, found);
  }
}

TEST(ScalarText, OfAnEnumerationAreItsNamesAndNoOrdinalAsTextOrNumber) {
  const std::map<std::string, std::vector<std::string>> names{
      {"action", {"forward", "drop", "redirect"}}, {"policy-modifier", {"symmetric", "stateless"}}};
  std::map<std::string, const Node*> nodes;
  for (const Node* const top : Host::Schema::instance().tops()) {
    collect(*top, std::string(top->module), nodes);
  }
  std::set<std::string> paths;
  for (const auto& [path, node] : nodes) {
    paths.insert(path);
    Host::ScalarReader reader;
    for (unsigned ordinal = 0; ordinal != 256; ++ordinal) {
      const auto& known = names.at(node->name);
      const auto before = static_cast<std::uint8_t>(255 - ordinal);
      std::uint8_t value = before;
      const std::string number = std::to_string(ordinal);
      EXPECT_FALSE(reader.read(*node, {JsonKind::number, number}, &value)) << path << number;
      EXPECT_FALSE(reader.read(*node, {JsonKind::text, number}, &value)) << path << number;
      EXPECT_FALSE(reader.readPlain(*node, number, &value)) << path << number;
      EXPECT_EQ(value, before) << path;
      if (ordinal < known.size()) {
        EXPECT_TRUE(reader.read(*node, {JsonKind::text, known[ordinal]}, &value)) << path;
        EXPECT_EQ(value, ordinal) << path;
        value = before;
        EXPECT_TRUE(reader.readPlain(*node, known[ordinal], &value)) << path;
        EXPECT_EQ(value, ordinal) << path;
      }
    }
  }
  EXPECT_EQ(paths, (std::set<std::string>{
                       "vela-l3/policy-source/policy-set/policy/rule/origin/action",
                       "vela-l3/policy-source/policy-set/policy/rule/origin/policy-modifier",
                       "vela-l3v2/policy-source/policy-set/policy/rule/origin/action",
                       "vela-l3v2/policy-source/policy-set/policy/rule/origin/policy-modifier"}));
}

/// The leaves below `node` that hold the name of a VRF, by path.
void collectVrfNames(const Node& node, const std::string& path,
                     std::map<std::string, const Node*>& found) {
  const std::string here = path + "/" + node.name;
  if (node.name == "vrf-name") {
    found.emplace(here, &node);
  }
  for (const Node* const child : node.children) {
    collectVrfNames(*child, here, found);
  }
}

TEST(ScalarText, OfAVrfNameHasAtMostAHundredBytesWhereverOneStandsAndIsNoEmptyKey) {
  std::map<std::string, const Node*> nodes;
  for (const Node* const top : Host::Schema::instance().tops()) {
    collectVrfNames(*top, std::string(top->module), nodes);
  }
  std::set<std::string> paths;
  for (const auto& [path, node] : nodes) {
    paths.insert(path);
    Host::ScalarReader reader;
    for (const std::size_t size : {0U, 1U, 99U, 100U, 101U}) {
      Kel::AnyValue value(*node->type);
      const std::string text(size, 'v');
      const bool fits = size <= 100 && (size != 0 || !node->isKey());
      EXPECT_EQ(reader.read(*node, {JsonKind::text, text}, value.get()), fits) << path << size;
      std::string read;
      value.type().append(read, value.get());
      EXPECT_EQ(read, fits ? text : "") << path << size;
      EXPECT_EQ(reader.readPlain(*node, text, value.get()), fits) << path << size;
    }
  }
  EXPECT_EQ(paths, (std::set<std::string>{
                       "vela-l3/policy-source/policy-set/policy/vrf-name",
                       "vela-l3/service-device-source/service-device/vrf/vrf-name",
                       "vela-l3v2/service-device-source/service-device/net-vrf/vrf-name",
                       "vela-policy-monitor/status/device-policy-list/net-vrf-name-by-vrf/"
                       "vrf-name"}));
}

}  // namespace
}  // namespace HostTests
