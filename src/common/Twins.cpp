// Both generations are declared twice, and the translation relies on how they correspond. What must
// be equal is proved equal here, and what differs on purpose is named: a difference that is not
// named, and a named one that is none, does not compile.

#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include "Kel/Rows.h"
#include "VelaL3/VelaL3.h"
#include "VelaL3V2/VelaL3V2.h"

namespace VelaPolicyMonitor {
namespace {

// Value types: the same fields of the same types in the same places.

/// Stands for any field when a record is made field by field.
struct AnyField {
  template <class T>
  constexpr operator T() const noexcept;  // NOLINT: it is there to be converted
};

template <class T, class... Fields>
consteval std::size_t fieldCount() {
  if constexpr (requires { T{Fields{}..., AnyField{}}; }) {
    return fieldCount<T, Fields..., AnyField>();
  } else {
    return sizeof...(Fields);
  }
}

template <class A, class B>
concept SameExtent =
    sizeof(A) == sizeof(B) && alignof(A) == alignof(B) &&
    std::is_aggregate_v<A>&& std::is_aggregate_v<B>&& fieldCount<A>() == fieldCount<B>();

template <class A, class B>
concept SameBounds = std::same_as<decltype(A::first), decltype(B::first)> &&
    std::same_as<decltype(A::last), decltype(B::last)> && offsetof(A, first)
== offsetof(B, first) && offsetof(A, last) == offsetof(B, last);

template <class A, class B>
concept SameProtocol = std::same_as<decltype(A::protocol), decltype(B::protocol)> &&
    offsetof(A, protocol)
== offsetof(B, protocol);

template <class A, class B>
concept SamePort = std::same_as<decltype(A::port), decltype(B::port)> && offsetof(A, port)
== offsetof(B, port);

template <class A, class B>
concept SameNames = std::same_as<std::underlying_type_t<A>, std::underlying_type_t<B>> &&
    kelNames(A{})
== kelNames(B{});

using IpRangeV1 = VelaL3::VelaIpRange;
using IpRangeV2 = VelaL3V2::VelaIpRange;
static_assert(fieldCount<IpRangeV1>() == 2);
static_assert(SameExtent<IpRangeV1, IpRangeV2> && SameBounds<IpRangeV1, IpRangeV2>);

using L4AppV1 = VelaL3::VelaL4App;
using L4AppV2 = VelaL3V2::VelaL4App;
static_assert(fieldCount<L4AppV1>() == 2);
static_assert(SameExtent<L4AppV1, L4AppV2> && SamePort<L4AppV1, L4AppV2> &&
              SameProtocol<L4AppV1, L4AppV2>);

using L4AppRangeV1 = VelaL3::VelaL4AppRange;
using L4AppRangeV2 = VelaL3V2::VelaL4AppRange;
static_assert(fieldCount<L4AppRangeV1>() == 3);
static_assert(SameExtent<L4AppRangeV1, L4AppRangeV2> && SameBounds<L4AppRangeV1, L4AppRangeV2> &&
              SameProtocol<L4AppRangeV1, L4AppRangeV2>);

static_assert(SameNames<VelaL3::VelaAction, VelaL3V2::VelaAction>);
static_assert(SameNames<VelaL3::VelaPolicyModifier, VelaL3V2::VelaPolicyModifier>);
static_assert(VelaL3::VelaPriority::min == VelaL3V2::VelaPriority::min &&
              VelaL3::VelaPriority::max == VelaL3V2::VelaPriority::max &&
              VelaL3::VelaPriority::kelOrdered == VelaL3V2::VelaPriority::kelOrdered &&
              sizeof(VelaL3::VelaPriority) == sizeof(VelaL3V2::VelaPriority));

// Entities: attribute by attribute the same ids, names and kinds, but for what is named.

/// The place of the attribute `name` among the rows; their number when there is none. Places and
/// not addresses: with sanitizers GCC does not compare an address in a constant.
template <class Entity>
constexpr std::size_t placeOf(std::string_view name) {
  const auto& rows = Kel::rowsOf<Entity>;
  std::size_t place = 0;
  while (place < rows.size() && rows[place].name != name) {
    ++place;
  }
  return place;
}

template <class Entity>
constexpr bool has(std::string_view name) {
  return placeOf<Entity>(name) < Kel::rowsOf<Entity>.size();
}

template <class A, class B>
constexpr bool sameAttribute(std::string_view name) {
  if (!has<A>(name) || !has<B>(name)) {
    return false;
  }
  const Kel::Row& a = Kel::rowsOf<A>[placeOf<A>(name)];
  const Kel::Row& b = Kel::rowsOf<B>[placeOf<B>(name)];
  return a.id == b.id && a.kind == b.kind;
}

/// Whether the attributes in which the two entities differ are exactly `differences`.
template <class V1, class V2, std::size_t N = 0>
constexpr bool mirrors(const std::array<std::string_view, N>& differences = {}) {
  const auto named = [&](std::string_view name) {
    for (const std::string_view difference : differences) {
      if (difference == name) {
        return true;
      }
    }
    return false;
  };
  for (const Kel::Row& row : Kel::rowsOf<V1>) {
    if (sameAttribute<V1, V2>(row.name) == named(row.name)) {
      return false;
    }
  }
  for (const Kel::Row& row : Kel::rowsOf<V2>) {
    if (sameAttribute<V1, V2>(row.name) == named(row.name)) {
      return false;
    }
  }
  for (const std::string_view difference : differences) {
    if (!has<V1>(difference) && !has<V2>(difference)) {
      return false;
    }
  }
  return true;
}

template <class... Names>
constexpr std::array<std::string_view, sizeof...(Names)> names(Names... all) {
  return {all...};
}

static_assert(Kel::twins<VelaL3::VelaPolicySourceConfig, VelaL3V2::VelaPolicySourceConfig>());
static_assert(Kel::twins<VelaL3::VelaPolicySetConfig, VelaL3V2::VelaPolicySetConfig>());
// A policy is keyed by its VRF in version 1 and by the network VRF in version 2.
static_assert(mirrors<VelaL3::VelaPolicyConfig, VelaL3V2::VelaPolicyConfig>(names("vrfName",
                                                                                  "netVrfName")));
static_assert(Kel::twins<VelaL3::VelaRuleConfig, VelaL3V2::VelaRuleConfig>());
// What is there for people stays in version 1, and the log flag is called otherwise.
static_assert(mirrors<VelaL3::VelaRuleOriginConfig, VelaL3V2::VelaRuleOriginConfig>(
    names("description", "owner", "log", "logEnabled")));
static_assert(VelaL3::VelaRuleOriginConfig::logAttr.id ==
              VelaL3V2::VelaRuleOriginConfig::logEnabledAttr.id);
// The layer-4 applications of the source are not translated.
static_assert(mirrors<VelaL3::VelaMatchConfig, VelaL3V2::VelaMatchConfig>(names("srcL4App",
                                                                                "srcL4AppRange")));

static_assert(Kel::twins<VelaL3::ServiceDeviceSourceConfig, VelaL3V2::ServiceDeviceSourceConfig>());
// Version 2 has network VRFs in the place of VRFs, and the traffic inspection of the record.
static_assert(mirrors<VelaL3::ServiceDeviceConfig, VelaL3V2::ServiceDeviceConfig>(
    names("vrf", "netVrf", "trafficInspection")));
static_assert(VelaL3::ServiceDeviceConfig::vrfAttr.id ==
              VelaL3V2::ServiceDeviceConfig::netVrfAttr.id);
// The key of a VRF is an attribute like others of its network VRF.
static_assert(mirrors<VelaL3::VrfConfig, VelaL3V2::NetVrfConfig>(names("vrfName", "netVrfName")));
static_assert(Kel::twins<VelaL3::L3IntfConfig, VelaL3V2::L3IntfConfig>());

}  // namespace
}  // namespace VelaPolicyMonitor
