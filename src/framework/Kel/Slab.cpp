#include "Kel/Slab.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace Kel {
namespace {

// What is asked of the system for a page. The rest of it is for the system's own notes: if a page
// took all of its 32 KiB, the next could only begin 64 KiB further.
constexpr std::size_t kPageBytes = 32768 - 64;

constexpr std::size_t roundUp(std::size_t value, std::size_t step) {
  return (value + step - 1) / step * step;
}

// All slabs, sorted by type name. Never destroyed, like the slabs.
struct SlabList {
  std::mutex mutex;
  std::vector<const Slab*> slabs;
};

SlabList& slabList() {
  static SlabList& all = *new SlabList;
  return all;
}

// The lock of a slab, taken only if a second thread may be there.
class Guard {
 public:
  explicit Guard(std::mutex& mutex) : lock_(mutex, std::defer_lock) {
    if (Brix::threadSafePointers.load(std::memory_order_relaxed)) {
      lock_.lock();
    }
  }

 private:
  std::unique_lock<std::mutex> lock_;
};

}  // namespace

Slab::Slab(const char* typeName, std::size_t size, std::size_t align, const EntityCounts* counts)
    : typeName_(typeName),
      counts_(counts),
      objectSize_(size),
      align_(std::max(align, alignof(Block))) {
  const std::size_t block = roundUp(std::max(size, sizeof(Block)), align_);
  const bool paged = kPaged && block <= kPage / 8;
  blockSize_ = static_cast<std::uint32_t>(block);
  blocksPerPage_ =
      paged ? static_cast<std::uint32_t>((kPageBytes - roundUp(sizeof(Page), align_)) / block) : 0;

  if (typeName_ == nullptr) {
    return;
  }
  SlabList& all = slabList();
  const std::lock_guard lock(all.mutex);
  const auto at = std::upper_bound(
      all.slabs.begin(), all.slabs.end(), std::string_view(typeName),
      [](std::string_view name, const Slab* other) { return name < other->typeName(); });
  all.slabs.insert(at, this);
}

Slab::~Slab() {
  SlabList& all = slabList();
  const std::lock_guard lock(all.mutex);
  std::erase(all.slabs, this);
  if (open_ != nullptr) {
    drop(*open_);
  }
}

std::size_t Slab::live() const noexcept {
  const Guard guard(mutex_);
  return peak_ - belowPeak_;
}

std::size_t Slab::peak() const noexcept {
  const Guard guard(mutex_);
  return peak_;
}

std::size_t Slab::bytes() const noexcept {
  const Guard guard(mutex_);
  return blocksPerPage_ == 0 ? (peak_ - belowPeak_) * blockSize_ : pages_ * kPageBytes;
}

void Slab::forEach(void (*visit)(void* context, const Slab& slab), void* context) {
  std::vector<const Slab*> slabs;
  {
    SlabList& all = slabList();
    const std::lock_guard lock(all.mutex);
    slabs = all.slabs;
  }
  for (const Slab* slab : slabs) {
    visit(context, *slab);
  }
}

void* Slab::allocateSlowly() {
  const Guard guard(mutex_);
  if (blocksPerPage_ != 0) {
    if (open_ == nullptr) {
      addPage();
    }
    return take(*open_);
  }
  void* const block = ::operator new(blockSize_, std::align_val_t(align_));
  countOneMore();
  return block;
}

void Slab::deallocateSlowly(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  const Guard guard(mutex_);
  if (blocksPerPage_ != 0) {
    give(block);
  } else {
    ++belowPeak_;
    ::operator delete(block, std::align_val_t(align_));
  }
}

void Slab::addPage() {
  auto* const memory = static_cast<std::byte*>(::operator new(kPageBytes, std::align_val_t(kPage)));
  open_ = new (memory)
      Page{nullptr, nullptr, nullptr, memory + roundUp(sizeof(Page), align_), blocksPerPage_};
  ++pages_;
}

// Behind the first page, which stays the one that blocks are taken from until it is full: so there
// is never an empty page but that one.
void Slab::open(Page& page) noexcept {
  page.previous = open_;
  page.next = open_ == nullptr ? nullptr : open_->next;
  if (page.next != nullptr) {
    page.next->previous = &page;
  }
  (open_ == nullptr ? open_ : open_->next) = &page;
}

void Slab::close(Page& page) noexcept {
  (page.previous == nullptr ? open_ : page.previous->next) = page.next;
  if (page.next != nullptr) {
    page.next->previous = page.previous;
  }
  if (page.previous == nullptr && open_ != nullptr && open_->left >= blocksPerPage_ / 4) {
    constexpr std::size_t kLine = 64;
    const auto* const memory = reinterpret_cast<const std::byte*>(open_);
    for (std::size_t at = 0; at < kPageBytes; at += kLine) {
      __builtin_prefetch(memory + at, 1);
    }
  }
}

void Slab::drop(Page& page) noexcept {
  close(page);
  --pages_;
  ::operator delete(&page, std::align_val_t(kPage));
}

}  // namespace Kel
