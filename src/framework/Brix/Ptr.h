#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <utility>

namespace [[using gnu: visibility("default")]] Brix {

/// Tag: the pointer takes over the reference that the caller already holds (that of `new`).
struct Adopt {};
inline constexpr Adopt adopt{};  ///< as in Brix::Ptr<T>(new T, Brix::adopt)

/// Intrusive reference-counted pointer to a framework object; null by default.
///
/// Assignment stores the new pointer before it releases the old one: the release may run a
/// destructor that calls back and reads this very pointer.
template <class T>
class Ptr {
 public:
  using element_type = T;

  Ptr() noexcept = default;
  /// Null.
  Ptr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): null is a value
  /// Takes a reference to `object`, which may be null.
  explicit Ptr(T* object) noexcept : object_(object) {
    if (object_ != nullptr) {
      object_->refInc();
    }
  }
  Ptr(T* object, Adopt) noexcept : object_(object) {}  ///< takes over the caller's reference
  Ptr(const Ptr& other) noexcept : Ptr(other.object_) {}
  Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  /// A pointer to a base, or to what may not be written.
  template <class U>
  requires std::convertible_to<U*, T*> Ptr(const Ptr<U>& other)
  noexcept : Ptr(other.get()) {}  // NOLINT(google-explicit-constructor)
  /// A pointer to a base, or to what may not be written, which takes over the reference.
  template <class U>
  requires std::convertible_to<U*, T*> Ptr(Ptr<U>&& other)
  noexcept : object_(other.release()) {}  // NOLINT(google-explicit-constructor)
  ~Ptr() {
    if (object_ != nullptr) {
      object_->refDec();
    }
  }

  Ptr& operator=(const Ptr& other) noexcept {
    Ptr(other).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& other) noexcept {
    Ptr(std::move(other)).swap(*this);
    return *this;
  }

  T* get() const noexcept { return object_; }  ///< null when there is none
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  void reset() noexcept { Ptr().swap(*this); }  ///< becomes null
  void swap(Ptr& other) noexcept { std::swap(object_, other.object_); }
  /// Gives up the reference without dropping it; the caller now holds it.
  [[nodiscard]] T* release() noexcept { return std::exchange(object_, nullptr); }

  template <class U>
  bool operator==(const Ptr<U>& other) const noexcept {
    return object_ == other.get();
  }
  bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }
  template <class U>
  std::strong_ordering operator<=>(const Ptr<U>& other) const noexcept {
    return std::compare_three_way{}(object_, other.get());
  }

 private:
  T* object_ = nullptr;
};

}  // namespace Brix

template <class T>
struct std::hash<Brix::Ptr<T>> {
  std::size_t operator()(const Brix::Ptr<T>& pointer) const noexcept {
    return std::hash<T*>{}(pointer.get());
  }
};
