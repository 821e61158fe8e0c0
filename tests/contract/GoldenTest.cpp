#include <gtest/gtest.h>

#include <limits>
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

/// All 65,536.
template <class Each>
void forEveryId(const Each& each) {
  using Limits = std::numeric_limits<Kel::AttrId>;
  for (int id = Limits::min(); id <= Limits::max(); ++id) {
    each(static_cast<Kel::AttrId>(id));
  }
}

/// One line per attribute: id, name, kind, and what the key, the value and the target are.
std::string schemaOf(const Kel::Module& module) {
  std::string out;
  for (std::size_t index = 0; index != module.size(); ++index) {
    const Kel::TypeDescriptor& type = module.type(index);
    out += std::string(module.name()) + " " + std::to_string(index) + " " + type.name + "\n";
    forEveryId([&](Kel::AttrId id) {
      const Kel::Row* const found = type.row(id);
      if (found == nullptr) {
        return;
      }
      const Kel::Row& row = *found;
      out += "  " + std::to_string(id) + " " + row.name + " " + Kel::nameOf(row.kind);
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
    });
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
std::string firstHandler(const std::vector<std::string>& lines, const std::string& machine) {
  if (lines.empty()) {
    return "nothing";
  }
  const std::string message = lines.front().substr(2);  // without its level
  const std::string signature = message.substr(0, message.find(')') + 1);
  const std::string own = "void " + machine + "::";
  return signature.starts_with(own) ? signature.substr(own.size()) : signature;
}

/// One line per attribute of each input: the handler that runs when it is notified. Found out by
/// notifying every id there can be and reading the trace, not from the tables.
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
    TestSupport::TraceCapture trace;
    forEveryId([&](Kel::AttrId id) {
      const Kel::Row* const attribute = entity.fwkType().descriptor().row(id);
      if constexpr (requires { sm->doUpdate(); }) {
        markUpdated(sm->cookie());  // without a mark there is nothing to stamp, nor to trace
      }
      if (attribute != nullptr && attribute->key != nullptr) {
        const Kel::AnyValue key(attribute->key());
        publisher.publish(id, key.get());
      } else {
        publisher.publish(id);
      }
      const std::string handler = firstHandler(trace.take(), Machine<Sm>::kName);
      if (attribute == nullptr) {
        EXPECT_EQ(handler, "nothing") << "for id " << id << ", which no attribute has";
      } else if (attribute->kind != Kel::RowKind::constant) {
        out += "    " + std::to_string(id) + " " + attribute->name + " -> " + handler + "\n";
      }
    });
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
