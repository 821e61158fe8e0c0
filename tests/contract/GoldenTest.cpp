#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Kel/ValueType.h"
#include "VelaL3/Module.h"
#include "VelaL3V2/Module.h"
#include "common/Module.h"
#include "contract/Contract.h"
#include "contract/Golden.h"
#include "monitor/Module.h"
#include "policy/Module.h"
#include "servicedevice/Module.h"
#include "support/TraceCapture.h"

namespace Contract {
namespace {

/// One line per attribute: id, name, kind, and what the key, the value and the target are.
std::string schemaOf(const Kel::Module& module) {
  std::string out;
  for (std::size_t index = 0; index != module.size(); ++index) {
    const Kel::TypeDescriptor& type = module.type(index);
    out += std::string(module.name()) + " " + std::to_string(index) + " " + type.name + "\n";
    for (const Kel::Row& row : type.rows) {
      out += "  " + std::to_string(row.id) + " " + row.name + " " + Kel::nameOf(row.kind);
      if (row.key != nullptr) {
        out += std::string(" key ") + (*row.keyName == '\0' ? "" : row.keyName + std::string(":")) +
               row.key().name;
      }
      if (row.value != nullptr) {
        out += std::string(" value ") +
               (*row.valueName == '\0' ? "" : row.valueName + std::string(":")) + row.value().name;
      }
      if (row.target != nullptr) {
        out += std::string(" of ") + row.target().name;
      }
      out += "\n";
    }
    if (!type.operations.empty()) {
      out += "  operations:";
      for (const std::string_view operation : type.operations) {
        out += " " + std::string(operation);
      }
      out += "\n";
    }
    if (!type.published.empty()) {
      out += "  published:";
      for (const Brix::AttrId id : type.published) {
        out += " " + std::to_string(id);
      }
      out += "\n";
    }
  }
  return out;
}

TEST(Golden, EveryAttributeOfEveryTypeIsAsInTheSchema) {
  expectGolden("schema.txt", schemaOf(kelModule(VelaL3::Type::policySource)) +
                                 schemaOf(kelModule(VelaL3V2::Type::policySource)) +
                                 schemaOf(kelModule(MonitorType::status)) +
                                 schemaOf(kelModule(CommonType::updateCookie)) +
                                 schemaOf(kelModule(PolicyType::root)) +
                                 schemaOf(kelModule(ServiceDeviceType::root)));
}

/// The handler whose signature the first trace line begins with; "nothing" without a line.
std::string firstHandler(const TestSupport::TraceCapture& trace, const std::string& machine) {
  if (trace.lines().empty()) {
    return "nothing";
  }
  const std::string& message = trace.lines().front().message;
  const std::string signature = message.substr(0, message.find(')') + 1);
  const std::string own = "void " + machine + "::";
  return signature.starts_with(own) ? signature.substr(own.size()) : signature;
}

/// One line per attribute of each input: the handler that runs when it is notified. Found out by
/// notifying and reading the trace, not from the tables.
template <class Sm>
std::string wiringOf() {
  World world;
  const auto sm = Machine<Sm>::args(world, Machine<Sm>::make);
  std::string out = std::string(Machine<Sm>::kName) + "\n";
  std::size_t next = 0;
  const auto publishers = Machine<Sm>::inputs(world);
  for (const Kel::Row& input : sm->fwkType().descriptor().rows) {
    if (input.kind != Kel::RowKind::input) {
      continue;
    }
    const Brix::Publisher publisher = publishers.at(next++);
    const auto& entity = *static_cast<const Kel::PtrInterface*>(input.find(*sm, nullptr));
    EXPECT_EQ(publisher.owner(), &entity);
    out += std::string("  ") + input.name + " " + entity.fwkType().descriptor().name + "\n";
    for (const Kel::Row& attribute : entity.fwkType().descriptor().rows) {
      if (attribute.kind == Kel::RowKind::constant) {
        continue;
      }
      if constexpr (requires { sm->doUpdate(); }) {
        markUpdated(sm->cookie());  // without a mark there is nothing to stamp, nor to trace
      }
      TestSupport::TraceCapture trace;
      if (attribute.key != nullptr) {
        const Kel::AnyValue key(attribute.key());
        publisher.publish(attribute.id, key.get());
      } else {
        publisher.publish(attribute.id);
      }
      out += "    " + std::to_string(attribute.id) + " " + attribute.name + " -> " +
             firstHandler(trace, Machine<Sm>::kName) + "\n";
    }
  }
  return out;
}

template <class... Sm>
std::string wiringOfAll(::testing::Types<Sm...> /*machines*/) {
  return (wiringOf<Sm>() + ...);
}

TEST(Golden, EveryAttributeOfEveryInputRunsTheHandlerOfTheWiring) {
  expectGolden("wiring.txt", wiringOfAll(AllMachines()));
}

}  // namespace
}  // namespace Contract
