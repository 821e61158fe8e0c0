#include "Brix/String.h"

#include <cstring>
#include <new>
#include <ostream>
#include <stdexcept>

#include "Brix/Counted.h"

namespace Brix {
namespace {

constexpr std::uint64_t kFactor = 0x9E37'79B9'7F4A'7C15U;

std::uint64_t mix(std::uint64_t state, std::uint64_t word) noexcept {
  const std::uint64_t product = (state ^ word) * kFactor;
  return product ^ (product >> 29U);
}

}  // namespace

std::uint32_t String::hashOf(std::string_view text) noexcept {
  std::uint64_t state = text.size();
  const char* at = text.data();
  std::size_t left = text.size();
  for (; left >= sizeof(std::uint64_t); left -= sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, sizeof word);
    state = mix(state, word);
    at += sizeof word;
  }
  if (left != 0) {
    std::uint64_t word = 0;
    std::memcpy(&word, at, left);
    state = mix(state, word);
  }
  return static_cast<std::uint32_t>(mix(state, text.size()) >> 32U);
}

String::String(std::string_view text) {
  if (text.empty()) {
    return;
  }
  if (text.size() > 0x7FFF'FFFF) {
    throw std::length_error("a string of more than 2 GiB");
  }
  void* block = ::operator new(sizeof(Text) + text.size() + 1);
  text_ = new (block) Text{1, static_cast<std::uint32_t>(text.size()), hashOf(text)};
  char* copy = reinterpret_cast<char*>(text_ + 1);
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
}

void String::retain() const noexcept {
  if (text_ == nullptr) {
    return;
  }
  if (threadSafePointers.load(std::memory_order_relaxed)) {
    text_->count.fetch_add(1, std::memory_order_relaxed);
  } else {
    text_->count.store(text_->count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
  }
}

void String::release() noexcept {
  if (text_ == nullptr) {
    return;
  }
  std::uint32_t before = 0;
  if (threadSafePointers.load(std::memory_order_relaxed)) {
    before = text_->count.fetch_sub(1, std::memory_order_acq_rel);
  } else {
    before = text_->count.load(std::memory_order_relaxed);
    text_->count.store(before - 1, std::memory_order_relaxed);
  }
  if (before == 1) {
    ::operator delete(text_);
  }
}

bool kelParse(std::string_view text, String& value, std::string& /*why*/) {
  value = String(text);
  return true;
}

std::ostream& operator<<(std::ostream& out, const String& text) { return out << text.view(); }

}  // namespace Brix
