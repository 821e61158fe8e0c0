#pragma once

#include <optional>
#include <string_view>

#include "agent/Loop.h"
#include "agent/OutputQueue.h"
#include "text/LineReader.h"

namespace Host {

class Client;

/// Answers the lines of clients.
class Answerer {
 public:
  Answerer() = default;
  Answerer(const Answerer&) = delete;
  Answerer& operator=(const Answerer&) = delete;
  virtual ~Answerer() = default;

  /// Answers `line`, the one of this number, in `from.output()`; or holds the client and
  /// answers later. `line` has SourceText::kPadding bytes behind it.
  virtual void line(Client& from, std::size_t number, std::string_view line) = 0;
  /// `from` is about to end.
  virtual void gone(Client& from) = 0;
  /// Whether no more lines are to be answered.
  virtual bool isOver() const = 0;
};

/// The agent's end of a connection.
///
/// In a turn of the loop it reads what there is, has it answered line by line as long as its slice
/// of the turn is not over, and sends the answers when the turn ends. While more answers wait than
/// `kMostWaiting` bytes, and while it is held, it neither answers nor reads: then it is the other
/// side that has to wait. Lines that came before the other side ended or vanished are answered all
/// the same; a last line without an end is not.
class Client : public Loop::Source {
 public:
  static constexpr std::size_t kMostWaiting = 16U << 20U;
  /// No line is longer than this, in bytes.
  static constexpr std::size_t kLongestLine = 64U << 20U;

  Client(Descriptor socket, Loop& loop);
  ~Client() override;

  void ready(std::uint32_t events) override;
  /// Answers at least one line, if there is one to be answered.
  void work(Answerer& answerer, std::chrono::microseconds slice);
  /// Sends what the socket takes, and follows what it needs from now on.
  void send();

  /// Whether it has something to work on at once.
  bool isBusy() const { return line_ && mayAnswer(); }
  /// Whether it has nothing to do any more.
  bool isOver() const;

  OutputQueue& output() { return output_; }
  /// The lines behind the present one wait until it is released: its answer comes later.
  void holdIs(bool held) { held_ = held; }
  /// It goes on to be of use when the other side sends nothing more.
  void stayIs(bool stays) { stays_ = stays; }
  /// Ends as soon as the answers that there are have been sent.
  void finish() { finished_ = true; }

  std::size_t waitingInput() const { return input_.waiting() + (line_ ? line_->size() + 1 : 0); }
  std::size_t waitingOutput() const { return output_.size(); }

 private:
  bool mayAnswer() const { return !held_ && !finished_ && output_.size() < kMostWaiting; }
  void read();
  void fetch();
  void tooLong();

  Descriptor socket_;
  Loop& loop_;
  std::uint32_t followed_;
  InputLines input_;
  std::optional<std::string_view> line_;  // the next one to be answered
  OutputQueue output_;
  bool readable_ = false;
  bool held_ = false;
  bool stays_ = false;
  bool finished_ = false;
  bool vanished_ = false;
};

}  // namespace Host
