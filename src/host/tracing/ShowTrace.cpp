#include "tracing/ShowTrace.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <optional>

#include "text/Concat.h"
#include "text/ExitCode.h"
#include "text/Report.h"
#include "tracing/TraceError.h"
#include "tracing/TracePrinter.h"
#include "tracing/TraceReader.h"
#include "tracing/TraceStatistics.h"

namespace Host {
namespace {

/// Waits for SIGINT or SIGTERM; while this lives they end nothing but the waiting.
class EndSignals {
 public:
  EndSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;
  ~EndSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  /// True when one came within a tenth of a second.
  bool came() const {
    constexpr timespec kTenth{0, 100'000'000};
    return sigtimedwait(&signals_, nullptr, &kTenth) > 0;
  }

 private:
  sigset_t signals_{};
  sigset_t before_{};
};

bool isGone(long process) { return ::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH; }

std::unique_ptr<TracePrinter> printerFor(const ShowTraceRequest& request, const TraceReader& reader,
                                         ByteSink& out) {
  switch (request.form) {
    case TraceForm::lines:
      return textPrinter(out, request.last);
    case TraceForm::json:
      return jsonPrinter(out, request.last);
    case TraceForm::chrome:
      return chromePrinter(out, reader.metadata().processId());
    case TraceForm::statistics:
    case TraceForm::jsonStatistics:
      break;
  }
  return std::make_unique<TraceStatistics>(out, reader, request.form == TraceForm::jsonStatistics);
}

class Show {
 public:
  Show(const ShowTraceRequest& request, Report& report, ByteSink& out)
      : request_(request),
        report_(report),
        reader_(TraceSource::at(request.path)),
        printer_(printerFor(request, reader_, out)) {
    if (request.follow && !reader_.source().isLive()) {
      throw TraceError(request.path + ": nothing more comes to a core file; leave out --follow");
    }
  }

  void once() {
    read();
    printer_->end();
  }

  void follow() {
    const EndSignals signals;
    int failures = 0;
    for (bool last = false; !last;) {
      // Asked first: what the process wrote before its end is still to be read.
      last = request_.exitAtEnd && isGone(reader_.metadata().processId());
      try {
        read();
        failures = 0;
      } catch (const TraceError&) {
        // The next process is just about to begin its trace; that takes no second.
        constexpr int kPatience = 10;
        if (++failures > kPatience) {
          throw;
        }
      }
      printer_->flush();
      last = last || signals.came();
    }
    printer_->end();
  }

 private:
  void read() {
    const std::uint64_t missed = reader_.missed();
    reader_.read([this](const Lumo::Record& record, const TraceSite& site) {
      if (request_.filter.takes(record, site)) {
        printer_->record(record, site);
      }
    });
    if (reader_.missed() != missed) {
      complain(request_.path + ": up to " + std::to_string(reader_.missed() - missed) +
               " segments were overwritten before they could be read; a larger --trace-size of "
               "the process that writes gives more time");
    }
    for (; complaints_ < reader_.faults().size(); ++complaints_) {
      complain(reader_.faults()[complaints_]);
    }
  }

  void complain(const std::string& what) {
    printer_->flush();
    report_.problem("vpm", what);
  }

  const ShowTraceRequest& request_;
  Report& report_;
  TraceReader reader_;
  std::unique_ptr<TracePrinter> printer_;
  std::size_t complaints_ = 0;  // faults that have been said
};

}  // namespace

int showTrace(const ShowTraceRequest& request, bool color, const Console& console) {
  Report report(console.err, color);
  std::optional<Show> show;
  try {
    show.emplace(request, report, console.out);
  } catch (const TraceError& error) {
    report.problem("vpm", error.what());
    return kWrongInput;
  }
  try {
    request.follow ? show->follow() : show->once();
  } catch (const TraceError& error) {
    report.problem("vpm", error.what());
  }
  return report.errors() == 0 ? kDone : kFailed;
}

}  // namespace Host
