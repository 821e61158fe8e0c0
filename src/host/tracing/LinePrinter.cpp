#include <deque>
#include <utility>

#include "Pario/Message.h"
#include "text/JsonText.h"
#include "tracing/TracePrinter.h"

namespace Host {
namespace {

using Append = void (*)(std::string& out, const Lumo::Record& record, const TraceSite& site);

class LinePrinter : public TracePrinter {
 public:
  LinePrinter(ByteSink& out, Append append, std::size_t last)
      : out_(out), append_(append), last_(last) {}

  void record(const Lumo::Record& record, const TraceSite& site) override {
    append_(last_ == 0 ? text_ : kept_.emplace_back(), record, site);
    if (kept_.size() > last_) {
      kept_.pop_front();
    }
    constexpr std::size_t kPiece = 1U << 16U;
    if (text_.size() > kPiece) {
      flush();
    }
  }

  void flush() override {
    for (const std::string& line : std::exchange(kept_, {})) {
      text_ += line;
    }
    last_ = 0;
    if (!text_.empty()) {
      out_.write(text_);
      text_.clear();
    }
  }

 private:
  ByteSink& out_;
  Append append_;
  std::size_t last_;
  std::string text_;
  std::deque<std::string> kept_;
};

void appendText(std::string& out, const Lumo::Record& record, const TraceSite& /*site*/) {
  Pario::appendTextLine(out, record);
}

void appendMember(std::string& out, std::string_view name, std::string_view text) {
  out.append(",\"").append(name).append("\":");
  appendJsonText(out, text);
}

void appendJsonValue(std::string& out, const Lumo::RecordedValue& value) {
  std::string text;
  Pario::appendValue(text, value);
  const Lumo::Kind kind = value.type->kind;
  const bool bare = kind == Lumo::Kind::natural || kind == Lumo::Kind::integer ||
                    kind == Lumo::Kind::boolean || kind == Lumo::Kind::real;
  bare ? static_cast<void>(out += text) : appendJsonText(out, text);
}

void appendJson(std::string& out, const Lumo::Record& record, const TraceSite& site) {
  out += "{\"time\":";
  Kel::appendValue(out, record.seconds);
  out += ",\"level\":";
  Kel::appendValue(out, site.site.level);
  appendMember(out, "file", site.site.file);
  out += ",\"line\":";
  Kel::appendValue(out, site.site.line);
  appendMember(out, "class", site.className);
  appendMember(out, "handler", site.site.form);
  std::string message;
  Pario::appendMessage(message, record);
  appendMember(out, "message", message);
  out += ",\"values\":{";
  for (std::size_t i = 0; i < record.values.size(); ++i) {
    out += i == 0 ? "" : ",";
    appendJsonText(out, site.names[i]);
    out += ':';
    appendJsonValue(out, record.values[i]);
  }
  out += "}}\n";
}

}  // namespace

std::unique_ptr<TracePrinter> textPrinter(ByteSink& out, std::size_t last) {
  return std::make_unique<LinePrinter>(out, appendText, last);
}

std::unique_ptr<TracePrinter> jsonPrinter(ByteSink& out, std::size_t last) {
  return std::make_unique<LinePrinter>(out, appendJson, last);
}

}  // namespace Host
