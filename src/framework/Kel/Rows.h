#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

#include "Kel/PtrInterface.h"
#include "Kel/TypeDescriptor.h"

namespace [[using gnu: visibility("default")]] Kel {

// Collecting the rows of a type. Each attribute declares one function `kelRow(Id<n>)` that returns
// its row; the compiler finds them by asking, for every number of the window in which attribute
// ids lie, whether the type has such a function. So the declaration of an attribute is the only
// place that knows it, and the rows come out in the order of their ids.

inline constexpr int kFirstId = 128;
inline constexpr int kLastId = 300;

template <int N>
struct Id {
  static_assert(N >= kFirstId && N <= kLastId, "an id outside the window would have no row");
};

template <class T, int N>
concept HasRow = requires {
  T::kelRow(Id<N>{});
};

template <class T, int... I>
consteval auto collectRows(std::integer_sequence<int, I...> /*ids*/) {
  std::array<Row, (std::size_t{0} + ... + std::size_t{HasRow<T, kFirstId + I>})> rows{};
  std::size_t at = 0;
  const auto put = [&]<int J>(std::integral_constant<int, J> /*offset*/) {
    if constexpr (HasRow<T, kFirstId + J>) {
      rows[at++] = T::kelRow(Id<kFirstId + J>{});
    }
  };
  (put(std::integral_constant<int, I>{}), ...);
  return rows;
}

template <class T>
inline constexpr auto rowsOf =
    collectRows<T>(std::make_integer_sequence<int, kLastId - kFirstId + 1>{});

/// Whether two types have the same attributes: ids, names, kinds, in the same order.
template <class A, class B>
consteval bool twins() {
  constexpr auto& a = rowsOf<A>;
  constexpr auto& b = rowsOf<B>;
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].id != b[i].id || std::string_view(a[i].name) != b[i].name || a[i].kind != b[i].kind) {
      return false;
    }
  }
  return true;
}

/// The descriptor of T, built from its rows; for the one source file that describes the module.
template <class T>
const TypeDescriptor& describe() {
  static constexpr TypeDescriptor type = [] {
    TypeDescriptor made{T::kelTypeName(), rowsOf<T>, {}, {}, nullptr};
    if constexpr (requires { T::kelOperations; }) {
      made.operations = T::kelOperations;
    }
    if constexpr (requires { T::kelPublished; }) {
      made.published = T::kelPublished;
    }
    if constexpr (requires(const T& object) { object.publisher(); }) {
      made.publisher = [](const PtrInterface& object) {
        return static_cast<const T&>(object).publisher();
      };
    }
    return made;
  }();
  return type;
}

/// An attribute as a constant of its type: its id, and the type of its key (void without keys).
template <class Key_>
struct Attr {
  using Key = Key_;
  AttrId id;
};
template <const auto& A>
using KeyOf = typename std::remove_cvref_t<decltype(A)>::Key;

}  // namespace Kel
