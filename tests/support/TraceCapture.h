#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Kel/TextTrace.h"

namespace TestSupport {

/// Collects what is written to the text trace while it lives; puts levels and sink back at its end.
class TraceCapture {
 public:
  struct Line {
    unsigned level;
    std::string handler;  ///< handlePolicySet
    std::string message;
    std::string text;  ///< the whole line, with its line break
  };

  explicit TraceCapture(std::string_view levels = "0-9",
                        std::string_view facility = "VelaPolicyMonitor")
      : facility_(Kel::TextTrace::facility(facility)), levelsBefore_(facility_.levels()) {
    sinkBefore_ = Kel::TextTrace::sinkIs(
        Kel::TextTrace::callbackSink([this](const Kel::TextTrace::Line& line) {
          std::string text;
          Kel::TextTrace::appendLine(text, line);
          lines_.push_back(
              {line.level, std::string(line.handler), std::string(line.message), std::move(text)});
        }));
    levelsAre(levels);
  }
  ~TraceCapture() {
    facility_.levelsAre(levelsBefore_);
    Kel::TextTrace::sinkIs(std::move(sinkBefore_));
  }
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;

  void levelsAre(std::string_view levels) {
    Kel::TextTrace::Levels parsed = 0;
    std::string why;
    ASSERT_TRUE(Kel::TextTrace::parseLevels(levels, parsed, why)) << why;
    facility_.levelsAre(parsed);
  }

  const std::vector<Line>& lines() const { return lines_; }

  /// The lines so far as "<level> <message>"; they are forgotten.
  std::vector<std::string> take() {
    std::vector<std::string> out;
    for (const Line& line : lines_) {
      out.push_back(std::to_string(line.level) + " " + line.message);
    }
    lines_.clear();
    return out;
  }

  /// The whole lines so far, with their line breaks; they are forgotten.
  std::vector<std::string> takeText() {
    std::vector<std::string> out;
    for (const Line& line : lines_) {
      out.push_back(line.text);
    }
    lines_.clear();
    return out;
  }

 private:
  Kel::TextTrace::Facility& facility_;
  Kel::TextTrace::Levels levelsBefore_;
  std::shared_ptr<Kel::TextTrace::Sink> sinkBefore_;
  std::vector<Line> lines_;
};

}  // namespace TestSupport
