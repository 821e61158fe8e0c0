#include "Kel/LogHandle.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <utility>
#include <vector>

#include "Kel/TextTrace.h"

namespace Kel {
namespace {

struct Registry {
  std::mutex mutex;  // guards the members below; not held while a sink runs
  std::vector<const LogHandle*> handles;
  LogHandle::Sink sink;
};

// Never destroyed: handles of other libraries leave it after this one's static objects are gone.
Registry& registry() {
  static auto* const only = new Registry;
  return *only;
}

void writeToStandardError(const LogHandle& handle, const std::string& message) {
  std::string line = handle.identifier();
  line += " (severity " + std::to_string(handle.severity()) + "): ";
  TextTrace::appendEscaped(line, message);  // an argument with a line break stays on the line
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

LogHandle::LogHandle(const char* identifier, int severity, const char* format,
                     const char* explanation, const char* recommendedAction)
    : identifier_(identifier),
      severity_(severity),
      format_(format),
      explanation_(explanation),
      recommendedAction_(recommendedAction) {
  const std::lock_guard lock(registry().mutex);
  registry().handles.push_back(this);
}

LogHandle::~LogHandle() {
  const std::lock_guard lock(registry().mutex);
  std::erase(registry().handles, this);
}

std::string LogHandle::message(std::initializer_list<std::string_view> arguments) const {
  std::string out;
  auto next = arguments.begin();
  for (const char* at = format_; *at != '\0'; ++at) {
    if (*at != '%' || (at[1] != 's' && at[1] != '%')) {
      out += *at;
      continue;
    }
    ++at;
    if (*at == '%') {
      out += '%';
    } else {
      out += next != arguments.end() ? *next++ : std::string_view("(missing)");
    }
  }
  for (; next != arguments.end(); ++next) {
    out.append(" (").append(*next).append(")");
  }
  return out;
}

void LogHandle::raiseWith(std::initializer_list<std::string_view> arguments) const noexcept {
  try {
    Sink sink;
    {
      const std::lock_guard lock(registry().mutex);
      sink = registry().sink;
    }
    const std::string text = message(arguments);
    sink ? sink(*this, text) : writeToStandardError(*this, text);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
    // Deliberate: raising a message is never the reason for which a program stops.
  }
}

void LogHandle::sinkIs(Sink sink) {
  const std::lock_guard lock(registry().mutex);
  registry().sink = std::move(sink);
}

const LogHandle* LogHandle::find(std::string_view identifier) {
  const std::lock_guard lock(registry().mutex);
  const auto& handles = registry().handles;
  const auto found = std::find_if(handles.begin(), handles.end(), [&](const LogHandle* handle) {
    return handle->identifier() == identifier;
  });
  return found == handles.end() ? nullptr : *found;
}

void LogHandle::forEach(const std::function<void(const LogHandle&)>& each) {
  const std::lock_guard lock(registry().mutex);
  for (const LogHandle* handle : registry().handles) {
    each(*handle);
  }
}

}  // namespace Kel
