#pragma once

#include <chrono>

#include "agent/Acknowledgements.h"
#include "agent/Clients.h"
#include "agent/Documents.h"
#include "agent/Trials.h"
#include "agent/Waits.h"
#include "agent/Watches.h"
#include "change/ChangeReader.h"
#include "protocol/RequestReader.h"
#include "text/Reply.h"
#include "tracing/TraceSettings.h"

namespace Host {

/// Answers the lines of the control socket: change lines, and requests.
class Service : public Answerer {
 public:
  Service(Engine& engine, const Clients& clients, Documents& documents, Loop& loop,
          TraceSettings trace)
      : engine_(engine),
        clients_(clients),
        documents_(documents),
        trace_(std::move(trace)),
        waits_(engine),
        watches_(engine.trees()),
        trials_(engine, loop) {}

  void line(Client& from, std::size_t number, std::string_view line) override;
  void gone(Client& from) override {
    waits_.drop(from);
    watches_.drop(from);
    trials_.drop(from);
  }
  /// Whether a client has asked the agent to stop.
  bool isOver() const override { return stopping_; }

  /// What was answered with success in this turn; none of it has been sent.
  Acknowledgements& acknowledgements() { return acknowledgements_; }
  /// Between two turns: answers that have become due.
  void look() {
    waits_.look();
    watches_.look();
    trials_.look();
  }
  std::optional<std::chrono::milliseconds> patience() const {
    const auto waits = waits_.patience();
    const auto trials = trials_.patience();
    return waits && trials ? std::min(*waits, *trials) : waits ? waits : trials;
  }

 private:
  void change(Client& from, std::size_t number, std::string_view line);
  void request(Client& from, std::size_t number, const Request& request);
  void show(Reply& reply, const Request& request);
  void statistics(JsonWriter& json);
  void reload(Client& from, std::size_t number);
  void trace(Reply& reply, const Request& request);

  Engine& engine_;
  const Clients& clients_;
  Documents& documents_;
  Acknowledgements acknowledgements_;
  TraceSettings trace_;
  Waits waits_;
  Watches watches_;
  Trials trials_;
  ChangeReader changes_;
  RequestReader requests_;
  const std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
  std::size_t lines_ = 0;
  bool stopping_ = false;
};

}  // namespace Host
