#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace [[using gnu: visibility("default")]] Kel {

/// A pointer that needs the alignment of 32-bit numbers only, so that a slot of a pointer and a
/// 32-bit number has 12 bytes and not 16. It owns nothing.
template <class T>
class PackedPointer {
 public:
  PackedPointer() noexcept = default;
  explicit PackedPointer(T* object) noexcept : words_(std::bit_cast<Words>(object)) {}
  T* get() const noexcept { return std::bit_cast<T*>(words_); }

 private:
  using Words = std::array<std::uint32_t, sizeof(T*) / sizeof(std::uint32_t)>;
  Words words_{};
};

}  // namespace Kel
