#include "Pario/Site.h"

#include <mutex>
#include <new>

#include "Pario/Listening.h"

namespace Pario::Impl {

constinit std::array<Bucket, std::size_t{1} << kBucketBits> buckets{};

namespace {

constinit std::mutex registering;

Lumo::Site describe(const Line& line, const Shape& shape, const char* const* literals) {
  Lumo::Site site;
  site.facility = line.source.facility;
  site.level = line.spot.level;
  site.file = line.source.file;
  site.line = line.spot.line;
  site.scope = line.source.scope;
  site.form = line.form;
  for (std::size_t i = 0; i < shape.pieces; ++i) {
    if (shape.types[i] == nullptr) {
      site.pieces.push_back({*literals++, nullptr});
    } else {
      site.pieces.push_back({{}, shape.types[i]()});
    }
  }
  return site;
}

const Site* make(const Line& line, const Shape& shape,
                 const std::array<const char*, kMostLiterals>& literals, const Site* next) {
  const Lumo::Site& binary = Lumo::registerSite(describe(line, shape, literals.data()));
  const std::uint32_t toBinary = binaryBit(binary.level);
  return new Site{line.form,
                  &line.source,
                  &shape,
                  line.spot.asWord(),
                  literals,
                  toBinary | textBit(binary.level) | kNarrowed,
                  toBinary,
                  binary.id,
                  next,
                  &binary,
                  &Kel::TextTrace::facility(line.source.facility),
                  binary.scope + binary.form};
}

}  // namespace

const Site* registerSite(const Line& line, const Shape& shape,
                         const std::array<const char*, kMostLiterals>& literals) noexcept {
  const std::lock_guard lock(registering);
  Bucket& bucket = bucketOf(line);
  const Site* const first = bucket.load(std::memory_order_relaxed);
  for (const Site* site = first; site != nullptr; site = site->next) {
    if (isSiteOf(*site, line, shape) && site->literals == literals) {
      return site;
    }
  }
  try {
    const Site* const site = make(line, shape, literals, first);
    bucket.store(site, std::memory_order_release);
    return site;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace Pario::Impl
