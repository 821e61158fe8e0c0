#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "change/Change.h"

namespace Host {

/// A request to the agent, read and checked. Members that were not given have no value, except
/// where one is said.
struct Request {
  enum class Kind : std::uint8_t {
    show,
    audit,
    explain,
    tryOut,
    watch,
    trace,
    stats,
    wait,
    reload,
    stop
  };

  Kind kind = Kind::show;

  /// Of `show`: which containers. Version 2 alone when nothing was said.
  bool v1 = false;
  bool v2 = false;
  bool status = false;
  /// Of `show`, `explain` and `watch`, in either generation.
  std::optional<TreePath> path = {};
  /// Of `try`.
  std::optional<Change> change = {};
  /// Of `wait`, in seconds; none: without end.
  std::optional<Kel::Seconds> timeout = {};
  /// Of `wait` and `trace`.
  std::optional<std::string> device = {};
  /// Of `trace`.
  std::optional<std::string> levels = {};
  std::optional<std::string> vrf = {};
  std::optional<std::string> rule = {};
  std::optional<std::string> handler = {};
};

}  // namespace Host
