#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>

#include "Brix/Counted.h"
#include "Kel/EntityCounts.h"

namespace [[using gnu: visibility("default")]] Kel {

/// Memory for the objects of one type, and the count of them.
///
/// How a slab works, and why it is like this:
///
/// - *What it is for.* The library lives for months in somebody else's process. Its objects come
/// and
///   go by the hundred thousand, all of a few types. Taking them from the heap of the process would
///   cost 16 bytes an object for the heap's own notes and rounding, would spread them among the
///   agent's data, and would leave nobody able to say how many there are. A slab per type gives
///   blocks without overhead that lie together, and two numbers per type that can be read while the
///   process runs: how many objects live, and how many there were at the most. A count that only
///   grows is a leak with a name.
///
/// - *Pages.* Memory comes from the system in pages of 32 KiB, aligned to their size: the page of a
///   block is found by clearing the low bits of its address, and a block needs no header. A page
///   begins with its own free list and the count of its used blocks.
///
/// - *A free list per page, not per type.* After objects have ended in random order, a single list
///   for all leads from anywhere to anywhere, and each allocation is a cache miss for months to
///   come. Here a list never leaves its page, and blocks are taken from one page until that is
///   full.
///
/// - *Blocks that came back* lie on their list in any order, and each says where the next one is:
///   one cache miss after the other when they are cold. So a page with many of them is fetched as a
///   whole when its turn comes.
///
/// - *Blocks that were never out* are not put on any list: a mark moves up through the page. So a
///   fresh page is touched only as far as it is used.
///
/// - *Open pages.* The pages with free blocks form a list, and blocks are taken from the first of
///   them. A page that becomes full leaves the list; one that was full and gets a block back is put
///   behind the first. A page that becomes empty goes back to the system at once, unless it is the
///   first: one object that comes and goes does not take a page with it each time. So no page but
///   the first is ever empty, and a slab holds at most one page more than its objects need at the
///   worst spread.
///
/// - *Large objects*, above an eighth of a page, would waste the rest of a page. They come from the
///   system one by one, and are counted like all others.
///
/// - *Threads.* While Brix::threadSafePointers is off, the slab works on plain numbers. While it is
///   on, a lock is taken, so that an object may end on another thread than the one that made it.
///   The switch is thrown while one thread only is at work, as with the pointers.
///
/// - *Failure.* Only a new page can fail, before anything has changed. A constructor that raises is
///   no case of its own: the language calls the operator delete of the class, which gives the block
///   and the count back.
///
/// - *The address sanitizer* sees each object as a block of its own, so that it finds a use after
///   the end: there are no pages then, but the counts are the same.
///
/// - *Statics.* The slabs of types are made at their first use and never destroyed, because objects
///   that are held by somebody's static variable end later than any static of ours.
class Slab {
 public:
  /// Whether there are pages.
#if defined(__SANITIZE_ADDRESS__)
  static constexpr bool kPaged = false;
#elif defined(__has_feature)
  static constexpr bool kPaged = !__has_feature(address_sanitizer);
#else
  static constexpr bool kPaged = true;
#endif

  /// `typeName` and `counts` are kept, not copied; forEach does not show a slab without a name.
  /// `size` is in bytes, `align` is a power of two.
  Slab(const char* typeName, std::size_t size, std::size_t align,
       const EntityCounts* counts = nullptr);
  Slab(const Slab&) = delete;
  Slab& operator=(const Slab&) = delete;
  /// No object is left.
  ~Slab();

  /// A block for one object. Raises std::bad_alloc and changes nothing when there is no memory.
  void* allocate() {
    if (open_ == nullptr || Brix::threadSafePointers.load(std::memory_order_relaxed)) {
      return allocateSlowly();
    }
    return take(*open_);
  }
  /// Takes back a block; null is none.
  void deallocate(void* block) noexcept {
    if (blocksPerPage_ == 0 || block == nullptr ||
        Brix::threadSafePointers.load(std::memory_order_relaxed)) {
      deallocateSlowly(block);
    } else {
      give(block);
    }
  }

  /// The objects there are at this moment.
  std::size_t live() const noexcept;
  /// The most objects there ever were at one moment.
  std::size_t peak() const noexcept;
  /// The memory held from the system, in bytes.
  std::size_t bytes() const noexcept;
  const char* typeName() const noexcept { return typeName_; }  ///< of what it is the memory
  /// The size of one object, in bytes.
  std::size_t objectSize() const noexcept { return objectSize_; }

  /// What the entities of this type have been doing; null for types that are no entities.
  const EntityCounts* counts() const noexcept { return counts_; }

  /// Calls `visit` for every slab of the process, sorted by type name.
  static void forEach(void (*visit)(void* context, const Slab& slab), void* context);

 private:
  struct Block {
    Block* next;
  };
  struct Page {
    Page* previous;
    Page* next;
    Block* free;         // blocks that came back
    std::byte* fresh;    // the first of those that were never out
    std::uint32_t left;  // blocks that are not out
  };

  static constexpr std::size_t kPage = 32768;

  static Page& pageOf(void* block) noexcept {
    const auto offset = reinterpret_cast<std::uintptr_t>(block) & (kPage - 1);
    return *reinterpret_cast<Page*>(static_cast<std::byte*>(block) - offset);
  }

  void* take(Page& page) noexcept {
    void* block = page.free;
    if (page.free != nullptr) {
      page.free = page.free->next;
    } else {
      block = page.fresh;
      page.fresh += blockSize_;
    }
    if (--page.left == 0) {
      close(page);
    }
    countOneMore();
    return block;
  }
  void give(void* block) noexcept {
    Page& page = pageOf(block);
    page.free = new (block) Block{page.free};
    ++belowPeak_;
    const std::uint32_t left = page.left++;
    if (left == 0) {
      open(page);
    }
    if (left + 1 == blocksPerPage_ && &page != open_) {
      drop(page);
    }
  }
  void countOneMore() noexcept {
    if (belowPeak_ == 0) {
      ++peak_;
    } else {
      --belowPeak_;
    }
  }

  void* allocateSlowly();
  void deallocateSlowly(void* block) noexcept;
  void addPage();
  void open(Page& page) noexcept;
  void close(Page& page) noexcept;
  void drop(Page& page) noexcept;

  Page* open_ = nullptr;  // the pages with free blocks; only the first of them may be empty
  std::size_t peak_ = 0;
  std::size_t belowPeak_ = 0;  // by how much fewer live than at the peak
  std::uint32_t blockSize_;
  std::uint32_t blocksPerPage_;  // 0: no pages, each block comes from the system
  const char* typeName_;
  const EntityCounts* counts_;
  std::size_t objectSize_;
  std::size_t align_;
  std::size_t pages_ = 0;
  mutable std::mutex mutex_;  // taken only while Brix::threadSafePointers is on
};

namespace Impl {

// Deliberate: it is never destroyed, because objects with static storage end while the process
// does.
template <class T>
[[gnu::noinline, gnu::cold]] Slab& madeSlabOf() {
  const EntityCounts* counts = nullptr;
  if constexpr (requires { T::kelCounts(); }) {
    counts = &T::kelCounts();
  }
  static Slab& slab = *new Slab(T::kelTypeName(), sizeof(T), alignof(T), counts);
  return slab;
}

}  // namespace Impl

/// The slab of T, whose name is T::kelTypeName().
template <class T>
Slab& slabOf() {
  static constinit std::atomic<Slab*> known{nullptr};
  Slab* slab = known.load(std::memory_order_acquire);
  if (slab == nullptr) [[unlikely]] {
    slab = &Impl::madeSlabOf<T>();
    known.store(slab, std::memory_order_release);
  }
  return *slab;
}

/// Base of T that makes `new T` take its memory from T's slab. A block whose constructor raises
/// goes back, and is counted back, by the rules of the language. Types derived from T are not
/// counted.
template <class T>
struct SlabAllocated {
  static void* operator new(std::size_t size) {
    return size == sizeof(T) ? slabOf<T>().allocate() : ::operator new(size);
  }
  static void operator delete(void* block, std::size_t size) noexcept {
    size == sizeof(T) ? slabOf<T>().deallocate(block) : ::operator delete(block);
  }
};

}  // namespace Kel
