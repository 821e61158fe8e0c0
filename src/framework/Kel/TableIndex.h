#pragma once

#include <cstdint>
#include <limits>

namespace [[using gnu: visibility("default")]] Kel {

/// The index of a Table: where the slot of a given hash is. Open addressing with linear probing.
///
/// A word holds the position of a slot in as many low bits as the index needs to count its words,
/// and the upper bits of the slot's hash in the others; all ones is an empty word. Up to 128 words
/// are of 16 bits, more of 32.
///
/// The search begins at the place that the uppermost bits of the hash name. They are in the word as
/// well, so that a deletion sees, without a look at any slot, which of the words behind it may move
/// up; nothing is ever left behind by a deletion, and an index does not age. Above 32,768 words the
/// bits in the word are too few for that; there the lowest bits of the hash say where to begin, so
/// that those in the word tell slots apart that begin at the same place.
template <class Word>
class TableIndex {
 public:
  static constexpr Word kEmpty = std::numeric_limits<Word>::max();

  /// Of two to the power of `bits` words.
  TableIndex(Word* words, std::uint32_t bits) noexcept
      : words_(words), mask_((1U << bits) - 1), bits_(bits) {}

  std::uint32_t position(const Word* word) const noexcept { return *word & mask_; }

  /// The word of the slot of this hash for whose position `same` holds; null when there is none.
  template <class Same>
  Word* find(std::uint32_t hash, Same same) const noexcept {
    const std::uint32_t tag = tagOf(hash);
    for (std::uint32_t at = home(hash);; at = (at + 1) & mask_) {
      const std::uint32_t word = words_[at];
      if (word == kEmpty) {
        return nullptr;
      }
      if ((word & ~mask_) == tag && same(word & mask_)) {
        return words_ + at;
      }
    }
  }

  void add(std::uint32_t hash, std::uint32_t position) const noexcept {
    std::uint32_t at = home(hash);
    while (words_[at] != kEmpty) {
      at = (at + 1) & mask_;
    }
    words_[at] = static_cast<Word>(tagOf(hash) | position);
  }

  /// The slot of this hash has moved.
  void move(std::uint32_t hash, std::uint32_t from, std::uint32_t to) const noexcept {
    const std::uint32_t tag = tagOf(hash);
    std::uint32_t at = home(hash);
    while (words_[at] != (tag | from)) {
      at = (at + 1) & mask_;
    }
    words_[at] = static_cast<Word>(tag | to);
  }

  /// Empties `word` and moves up the words behind it that are there only because their own place
  /// was taken. `hashAt` returns the hash of the slot at a position.
  template <class HashAt>
  void erase(Word* word, HashAt hashAt) const noexcept {
    auto hole = static_cast<std::uint32_t>(word - words_);
    for (std::uint32_t at = (hole + 1) & mask_; words_[at] != kEmpty; at = (at + 1) & mask_) {
      const std::uint32_t begin = tellsHome()
                                      ? std::uint32_t{words_[at]} >> (shift() - (32U - kBits))
                                      : home(hashAt(words_[at] & mask_));
      if (((at - begin) & mask_) >= ((at - hole) & mask_)) {
        words_[hole] = words_[at];
        hole = at;
      }
    }
    words_[hole] = kEmpty;
  }

 private:
  static constexpr std::uint32_t kBits = std::numeric_limits<Word>::digits;

  // Whether a word holds all the bits of the hash that say where the search begins.
  bool tellsHome() const noexcept { return kBits == 16 || bits_ <= 15; }
  std::uint32_t shift() const noexcept { return (32U - bits_) % 32U; }
  std::uint32_t home(std::uint32_t hash) const noexcept {
    return tellsHome() ? hash >> shift() : hash & mask_;
  }
  std::uint32_t tagOf(std::uint32_t hash) const noexcept { return hash >> (32U - kBits) & ~mask_; }

  Word* words_;
  std::uint32_t mask_;
  std::uint32_t bits_;
};

}  // namespace Kel
