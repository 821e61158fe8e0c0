#include "data/Schema.h"

#include <gtest/gtest.h>

namespace HostTests {
namespace {

using Host::Node;
using Host::Schema;

/// The nodes below `node`, a line each, as a person would draw the tree.
void draw(std::string& out, const Node& node, const std::string& indent) {
  out += indent + node.name;
  switch (node.kind) {
    case Node::Kind::presence:
      out += "!";
      break;
    case Node::Kind::leafList:
      out += "*";
      break;
    case Node::Kind::list:
    case Node::Kind::records:
    case Node::Kind::mapping:
      out += "* [";
      for (std::size_t i = 0; i < node.keys; ++i) {
        out += (i == 0 ? "" : " ") + node.children[i]->name;
      }
      out += "]";
      break;
    default:
      break;
  }
  out += node.state ? " (state)\n" : "\n";
  for (const Node* const child : node.children) {
    if (!child->isKey()) {
      draw(out, *child, indent + "  ");
    }
  }
}

std::string drawn(const char* container) {
  std::string out;
  draw(out, *Schema::instance().top(container), "");
  return out;
}

TEST(Schema, NamesTheNodesOfVersion1LikeItsModule) {
  EXPECT_EQ(drawn("vela-l3:policy-source"),
            "policy-source\n"
            "  policy-set* [device-name]\n"
            "    policy* [vrf-name]\n"
            "      rule* [priority]\n"
            "        origin* [name]\n"
            "          tags\n"
            "          policy-modifier*\n"
            "          match!\n"
            "            src-ip*\n"
            "            src-ip-range* [first last]\n"
            "            dst-ip*\n"
            "            dst-ip-range* [first last]\n"
            "            l3-app*\n"
            "            src-l4-app* [port protocol]\n"
            "            src-l4-app-range* [first last protocol]\n"
            "            dst-l4-app* [port protocol]\n"
            "            dst-l4-app-range* [first last protocol]\n"
            "          action\n"
            "          log\n"
            "      timestamp\n");
  EXPECT_EQ(drawn("vela-l3:service-device-source"),
            "service-device-source\n"
            "  service-device* [device-name]\n"
            "    vrf* [vrf-name]\n"
            "      l3-intf* [address]\n"
            "        reachable-subnet*\n"
            "      timestamp\n");
}

TEST(Schema, MarksVersion2AsState) {
  EXPECT_EQ(drawn("vela-l3v2:service-device-source"),
            "service-device-source (state)\n"
            "  service-device* [device-name] (state)\n"
            "    traffic-inspection (state)\n"
            "    net-vrf* [net-vrf-name] (state)\n"
            "      vrf-name (state)\n"
            "      l3-intf* [address] (state)\n"
            "        reachable-subnet* (state)\n"
            "      timestamp (state)\n");
}

TEST(Schema, MarksTheFlagsOfARecordAsState) {
  EXPECT_EQ(drawn("vela-policy-monitor:status"),
            "status\n"
            "  device-policy-list* [device-name]\n"
            "    policy-converge (state)\n"
            "    service-device-converge (state)\n"
            "    net-vrf-name-by-vrf* [vrf-name]\n"
            "      net-vrf-name\n"
            "    traffic-inspection\n");
}

TEST(Schema, KnowsContainersByTheirQualifiedNamesOnly) {
  EXPECT_EQ(Schema::instance().top("policy-source"), nullptr);
  EXPECT_EQ(Schema::instance().top("vela-l3:status"), nullptr);
  EXPECT_EQ(Schema::instance().top("vela-l3v2:"), nullptr);
  EXPECT_EQ(Schema::instance().tops().size(), 5U);
}

TEST(Schema, WritesAttributeNamesInKebabCase) {
  EXPECT_EQ(Host::kebabCase("srcL4AppRange"), "src-l4-app-range");
  EXPECT_EQ(Host::kebabCase("match"), "match");
}

}  // namespace
}  // namespace HostTests
