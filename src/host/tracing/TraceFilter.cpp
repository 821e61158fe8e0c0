#include "tracing/TraceFilter.h"

#include <algorithm>

#include "Pario/Message.h"

namespace Host {
namespace {

bool isClass(std::string_view name, std::string_view wanted) {
  return name == wanted ||
         (name.ends_with(wanted) && name.substr(0, name.size() - wanted.size()).ends_with("::"));
}

}  // namespace

bool TraceFilter::takes(const Lumo::Record& record, const TraceSite& site) const {
  if (((levels >> site.site.level) & 1U) == 0 || record.seconds < from || record.seconds > to) {
    return false;
  }
  if ((record.subject & scope.mask) != scope.value ||
      (!scope.handler.empty() && site.site.form != scope.handler)) {
    return false;
  }
  if (!classes.empty() && std::ranges::none_of(classes, [&](const std::string& wanted) {
        return isClass(site.className, wanted);
      })) {
    return false;
  }
  if (text.empty()) {
    return true;
  }
  std::string line;
  Pario::appendTextLine(line, record);
  return line.find(text) != std::string::npos;
}

}  // namespace Host
