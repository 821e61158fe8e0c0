#include <utility>
#include <vector>

#include "Pario/Message.h"
#include "text/Concat.h"
#include "text/JsonText.h"
#include "tracing/TracePrinter.h"

namespace Host {
namespace {

/// Runs of handlers become slices, everything else instants.
///
/// Not every entry line has its exit line: an exception leaves none, some handlers have only one of
/// the two, and a ring has lost what is old. So a slice is drawn only when both are there: an exit
/// belongs to the innermost open entry of the same function with the same printed time (that of
/// their event). Entries further in than that one have ended without a line and are instants, as
/// are those still open when the time goes on, and exits without an entry.
class ChromePrinter : public TracePrinter {
 public:
  ChromePrinter(ByteSink& out, long processId)
      : out_(out), process_(std::to_string(processId)), text_("[") {}

  void record(const Lumo::Record& record, const TraceSite& site) override {
    if (records_++ == 0) {
      origin_ = record.stamp;
    }
    if (!open_.empty() && open_.front().seconds != record.seconds) {
      closeDownTo(0);
    }
    if (isEntry(site)) {
      open_.push_back(
          {site.className + "::" + site.function, record.stamp, record.seconds, messageOf(record)});
    } else if (site.site.level != kExit || !closesSlice(record, site)) {
      instant(
          {site.className + "::" + site.function, record.stamp, record.seconds, messageOf(record)});
    }
    flush();
  }

  void flush() override {
    constexpr std::size_t kPiece = 1U << 16U;
    if (text_.size() > kPiece) {
      out_.write(std::exchange(text_, {}));
    }
  }

  void end() override {
    closeDownTo(0);
    text_ += "\n]\n";
    out_.write(text_);
  }

 private:
  static constexpr unsigned kEntry = 8;
  static constexpr unsigned kExit = 7;

  struct Point {
    std::string name;
    std::uint64_t stamp;
    Kel::Seconds seconds;
    std::string message;
  };

  /// Some walks write what they add and remove at the level of entries.
  static bool isEntry(const TraceSite& site) {
    const std::string& first = site.site.pieces.front().literal;
    return site.site.level == kEntry && first.find(" add ") == std::string::npos &&
           first.find(" remove ") == std::string::npos;
  }

  static std::string messageOf(const Lumo::Record& record) {
    std::string message;
    Pario::appendMessage(message, record);
    return message;
  }

  bool closesSlice(const Lumo::Record& record, const TraceSite& site) {
    const std::string name = site.className + "::" + site.function;
    for (std::size_t i = open_.size(); i-- > 0;) {
      if (open_[i].name == name) {
        closeDownTo(i + 1);
        const Point entry = std::move(open_.back());
        open_.pop_back();
        event("X", entry, concat({",\"dur\":", microseconds(record.stamp - entry.stamp)}));
        return true;
      }
    }
    return false;
  }

  void closeDownTo(std::size_t depth) {
    for (; open_.size() > depth; open_.pop_back()) {
      instant(open_.back());
    }
  }

  void instant(const Point& point) { event("i", point, R"(,"s":"t")"); }

  static std::string microseconds(std::uint64_t nanoseconds) {
    constexpr std::uint64_t kThousand = 1000;
    const std::string rest = std::to_string(kThousand + nanoseconds % kThousand);
    return concat({std::to_string(nanoseconds / kThousand), ".", rest.substr(1)});
  }

  void event(const char* phase, const Point& point, const std::string& more) {
    text_ += events_++ == 0 ? "\n{\"name\":" : ",\n{\"name\":";
    appendJsonText(text_, point.name);
    text_ += concat({R"(,"ph":")", phase, R"(","ts":)", microseconds(point.stamp - origin_), more,
                     ",\"pid\":", process_, R"(,"tid":1,"args":{"time":)"});
    Kel::appendValue(text_, point.seconds);
    text_ += ",\"message\":";
    appendJsonText(text_, point.message);
    text_ += "}}";
  }

  ByteSink& out_;
  std::string process_;
  std::string text_;
  std::vector<Point> open_;   // entries whose exit has not come, the innermost last
  std::uint64_t origin_ = 0;  // small numbers: viewers keep times as floating point
  std::size_t records_ = 0;
  std::size_t events_ = 0;
};

}  // namespace

std::unique_ptr<TracePrinter> chromePrinter(ByteSink& out, long processId) {
  return std::make_unique<ChromePrinter>(out, processId);
}

}  // namespace Host
