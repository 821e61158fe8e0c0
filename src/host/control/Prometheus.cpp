#include "control/Prometheus.h"

#include <algorithm>
#include <array>

#include "control/AgentAnswer.h"
#include "text/Concat.h"

namespace Host {
namespace {

using simdjson::dom::element;
using simdjson::dom::object;

/// How a count is called there. A name that ends in _total is that of a counter.
struct Metric {
  std::string_view member;
  std::string_view name;
  std::string_view help;
};

constexpr std::array kSingle{
    Metric{"applied", "vpm_change_lines_applied_total", "Change lines applied without an error."},
    Metric{"failed", "vpm_change_lines_failed_total",
           "Change lines with an error, refused or not."},
    Metric{"writes", "vpm_writes_total",
           "Single writes to version 1 and to the monitor's records, and announcements."},
    Metric{"uptime", "vpm_uptime_seconds", "How long the agent has been running."},
    Metric{"clients", "vpm_clients", "Clients that are connected to the control socket."},
    Metric{"watches", "vpm_watches", "Watches that tell clients of every change."},
    Metric{"lines", "vpm_socket_lines_total", "Lines read from the control socket."},
    Metric{"waiting-input", "vpm_waiting_input_bytes",
           "Bytes read from clients and not handled yet."},
    Metric{"waiting-output", "vpm_waiting_output_bytes",
           "Bytes for clients that have not read them yet."},
    Metric{"postponed", "vpm_postponed_total",
           "Changes that had to wait for a handler at work before they were looked at."},
    Metric{"postponed-at-once", "vpm_postponed_at_once",
           "How many changes at most have waited for one state machine."},
    Metric{"resident", "vpm_resident_bytes", "Memory of the agent that is in RAM."},
};

/// Counts of many things of one kind, told apart by a label.
struct Family {
  std::string_view member;
  std::array<std::string_view, 2> labels;  ///< one may be empty
  std::array<Metric, 2> metrics;
};

constexpr Family kTypes{
    "types",
    {"type", ""},
    {{{"objects", "vpm_objects", "Objects that exist, by type."},
      {"bytes", "vpm_object_bytes", "Bytes of the objects that exist, by type."}}}};

constexpr Family kEntities{
    "entities",
    {"type", ""},
    {{{"notifications", "vpm_notifications_total", "Changes that entities published, by type."},
      {"unchanged-writes", "vpm_unchanged_writes_total",
       "Writes to entities that found what they wrote, by type."}}}};

constexpr Family kHandlers{
    "handlers",
    {"class", "handler"},
    {{{"calls", "vpm_handler_calls_total", "Runs of handlers of the library."},
      {"seconds", "vpm_handler_seconds_total",
       "Time that they took, without that of handlers that ran inside."}}}};

std::string labelText(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    escaped += c == '\\' ? "\\\\" : c == '"' ? "\\\"" : c == '\n' ? "\\n" : std::string(1, c);
  }
  return escaped;
}

void appendHead(std::string& out, const Metric& metric, std::string_view type) {
  out +=
      concat({"# HELP ", metric.name, " ", metric.help, "\n# TYPE ", metric.name, " ", type, "\n"});
}

std::string_view typeOf(const Metric& metric) {
  return metric.name.ends_with("_total") ? "counter" : "gauge";
}

void appendSingle(std::string& out, std::string_view member, const element& value) {
  const auto* const known = std::ranges::find(kSingle, member, &Metric::member);
  if (known != kSingle.end()) {
    appendHead(out, *known, typeOf(*known));
    out += concat({known->name, " ", simdjson::minify(value), "\n"});
    return;
  }
  std::string name = concat({"vpm_", member});
  std::ranges::replace(name, '-', '_');
  appendHead(out, {member, name, "A count of the agent."}, "untyped");
  out += concat({name, " ", simdjson::minify(value), "\n"});
}

std::string valueIn(const object& members, std::string_view name) {
  element value;
  return members[name].get(value) == simdjson::SUCCESS ? simdjson::minify(value) : "0";
}

void appendFamily(std::string& out, const Family& family, const object& stats) {
  const auto entries = arrayIn(stats, family.member);
  if (entries.size() == 0) {
    return;
  }
  for (const Metric& metric : family.metrics) {
    appendHead(out, metric, typeOf(metric));
    for (const element entry : entries) {
      const object members = entry.get_object();
      out += metric.name;
      std::string_view before = "{";
      for (const std::string_view label : family.labels) {
        if (!label.empty()) {
          out += concat({before, label, "=\"", labelText(textIn(members, label)), "\""});
          before = ",";
        }
      }
      out += concat({"} ", valueIn(members, metric.member), "\n"});
    }
  }
}

}  // namespace

std::string prometheusText(const object& stats) {
  std::string out;
  for (const auto& [member, value] : stats) {
    if (value.is_number()) {
      appendSingle(out, member, value);
    }
  }
  appendFamily(out, kTypes, stats);
  appendFamily(out, kEntities, stats);
  appendFamily(out, kHandlers, stats);
  return out;
}

}  // namespace Host
