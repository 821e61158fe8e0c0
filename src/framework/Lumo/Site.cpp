#include "Lumo/Site.h"

#include <atomic>
#include <deque>
#include <mutex>
#include <utility>

namespace Lumo {
namespace {

struct Registry {
  std::mutex mutex;        // guards `sites`; a site is never changed once it is in
  std::deque<Site> sites;  // a deque: the address of a site never changes
};

// Never destroyed: destructors that run after main still write records.
Registry& registry() {
  static auto* const only = new Registry;
  return *only;
}

constinit std::atomic<std::uint32_t> registered{0};

void appendDoublingPercents(std::string& out, std::string_view text) {
  for (const char byte : text) {
    out += byte;
    if (byte == '%') {
      out += '%';
    }
  }
}

}  // namespace

std::string_view Site::handler() const noexcept {
  return std::string_view(form).substr(0, form.find('('));
}

std::string Site::format() const {
  std::string out;
  appendDoublingPercents(out, scope);
  appendDoublingPercents(out, form);
  for (const Piece& piece : pieces) {
    if (piece.value != nullptr) {
      out += "%s";
    } else {
      appendDoublingPercents(out, piece.literal);
    }
  }
  return out;
}

const Site& registerSite(Site site) {
  site.file.erase(0, site.file.rfind('/') + 1);  // npos + 1 is 0: nothing is erased
  Registry& all = registry();
  const std::lock_guard lock(all.mutex);
  site.id = static_cast<std::uint32_t>(all.sites.size());
  const Site& added = all.sites.emplace_back(std::move(site));
  registered.store(added.id + 1, std::memory_order_release);
  return added;
}

const Site* siteOf(std::uint32_t id) {
  Registry& all = registry();
  const std::lock_guard lock(all.mutex);
  return id < all.sites.size() ? &all.sites[id] : nullptr;
}

std::uint32_t siteCount() noexcept { return registered.load(std::memory_order_acquire); }

}  // namespace Lumo
