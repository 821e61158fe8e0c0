#include "Kel/BlockMemory.h"

#include <array>
#include <cstdint>
#include <new>
#include <utility>

#include "Kel/Slab.h"

namespace Kel {
namespace {

constexpr std::size_t kStep = 16;
constexpr std::size_t kLargest = 512;

// By size, in steps. Never destroyed, like the slabs of types.
using Slabs = std::array<Slab, kLargest / kStep>;

template <std::size_t... At>
Slabs* makeSlabs(std::index_sequence<At...> /*steps*/) {
  return new Slabs{Slab(nullptr, (At + 1) * kStep, alignof(std::uint64_t))...};
}

Slab& slabFor(std::size_t bytes) {
  static Slabs& slabs = *makeSlabs(std::make_index_sequence<kLargest / kStep>());
  return slabs[(bytes - 1) / kStep];
}

// Under the address sanitizer blocks keep their exact sizes.
constexpr bool isSmall(std::size_t bytes) { return Slab::kPaged && bytes <= kLargest; }

}  // namespace

void* BlockMemory::allocate(std::size_t bytes) {
  return isSmall(bytes) ? slabFor(bytes).allocate() : ::operator new(bytes);
}

void BlockMemory::deallocate(void* block, std::size_t bytes) noexcept {
  isSmall(bytes) ? slabFor(bytes).deallocate(block) : ::operator delete(block);
}

}  // namespace Kel
