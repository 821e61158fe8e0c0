#include "Pario/Site.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace Pario::Impl {
namespace {

// Sites are never removed, so a reader needs no lock: it walks a chain whose every link was
// complete before it was published.
constexpr std::size_t kBuckets = 1024;
constinit std::array<std::atomic<const Site*>, kBuckets> buckets{};
constinit std::mutex registering;

std::atomic<const Site*>& bucketOf(const Line& line) {
  const auto address = reinterpret_cast<std::uintptr_t>(line.form);
  const std::uint64_t mixed =
      (address + line.line * 0x9e3779b97f4a7c15U + line.level) * 0xff51afd7ed558ccdU;
  return buckets[mixed >> 54U];
}
static_assert(kBuckets == std::size_t{1} << (64U - 54U));

const Site* findIn(const Site* site, const Line& line, const Shape& shape,
                   const char* const* literals) {
  for (; site != nullptr; site = site->next) {
    if (site->form == line.form && site->line == line.line && site->scope == line.scope &&
        site->level == line.level && site->shape == &shape &&
        std::equal(literals, literals + shape.literals, site->literals)) {
      return site;
    }
  }
  return nullptr;
}

Lumo::Site describe(const Line& line, const Shape& shape, const char* const* literals) {
  Lumo::Site site;
  site.facility = line.facility;
  site.level = line.level;
  site.file = line.file;
  site.line = line.line;
  site.scope = line.scope;
  site.form = line.form;
  for (std::size_t i = 0; i < shape.pieces; ++i) {
    if (shape.types[i] == nullptr) {
      site.pieces.push_back({*literals++, nullptr});
    } else {
      site.pieces.push_back({{}, shape.types[i]});
    }
  }
  return site;
}

[[gnu::cold]] const Site& registerSite(const Line& line, const Shape& shape,
                                       const char* const* literals) {
  const std::lock_guard lock(registering);
  std::atomic<const Site*>& bucket = bucketOf(line);
  const Site* const first = bucket.load(std::memory_order_relaxed);
  if (const Site* const site = findIn(first, line, shape, literals); site != nullptr) {
    return *site;  // another thread was faster
  }
  auto* const keptLiterals = new const char*[shape.literals];
  std::copy_n(literals, shape.literals, keptLiterals);
  auto* const site = new Site{line.scope,
                              line.form,
                              line.line,
                              line.level,
                              &shape,
                              keptLiterals,
                              &Lumo::registerSite(describe(line, shape, literals)),
                              &Kel::TextTrace::facility(line.facility),
                              std::string(line.scope) + line.form,
                              first};
  bucket.store(site, std::memory_order_release);
  return *site;
}

}  // namespace

const Site& findSite(const Line& line, const Shape& shape, const char* const* literals) {
  const Site* const site =
      findIn(bucketOf(line).load(std::memory_order_acquire), line, shape, literals);
  return site != nullptr ? *site : registerSite(line, shape, literals);
}

}  // namespace Pario::Impl
