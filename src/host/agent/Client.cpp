#include "agent/Client.h"

#include <sys/epoll.h>

#include "text/Concat.h"
#include "text/Reply.h"

namespace Host {
namespace {

/// How many times a turn it reads: enough for a good deal of answers with one flush to disk.
constexpr int kReads = 4;

}  // namespace

Client::Client(Descriptor socket, Loop& loop)
    : socket_(std::move(socket)),
      loop_(loop),
      followed_(EPOLLIN),
      input_(socket_.number(), "the connection") {
  loop_.add(socket_.number(), followed_, *this);
}

Client::~Client() { loop_.remove(socket_.number()); }

void Client::ready(std::uint32_t events) {
  readable_ = readable_ || (events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0;
  // Nobody is there to read an answer: what it would wait for, and what holds it, is void.
  vanished_ = vanished_ || (events & (EPOLLHUP | EPOLLERR)) != 0;
  held_ = held_ && !vanished_;
}

void Client::work(Answerer& answerer, std::chrono::microseconds slice) {
  const auto end = std::chrono::steady_clock::now() + slice;
  int reads = 0;
  while (mayAnswer() && !answerer.isOver()) {
    if (!line_ && readable_ && reads++ < kReads) {
      read();
    }
    if (!line_) {
      break;
    }
    const std::string_view line = *std::exchange(line_, std::nullopt);
    if (!isBlank(line)) {
      answerer.line(*this, input_.number(), line);
    }
    fetch();
    if (std::chrono::steady_clock::now() >= end) {
      break;
    }
  }
}

void Client::read() {
  try {
    input_.fill();
  } catch (const std::exception&) {
    vanished_ = true;  // the other side has ended it without taking all of its answers
    readable_ = false;
    return;
  }
  readable_ = false;
  fetch();
}

void Client::fetch() {
  line_ = input_.ready();
  if (line_ && !input_.isWhole()) {
    line_.reset();
  }
  if ((line_ ? line_->size() : input_.waiting()) > kLongestLine) {
    tooLong();
  }
}

void Client::tooLong() {
  const std::size_t number = input_.number() + (line_ ? 0 : 1);
  line_.reset();
  finished_ = true;
  Reply(output_, number)
      .error(concat({"this line is longer than ", std::to_string(kLongestLine),
                     " bytes; send it in parts. The connection ends here"}));
}

void Client::send() {
  if (!output_.sendTo(socket_.number())) {
    vanished_ = true;
  }
  const bool reads = mayAnswer() && !input_.over() && !vanished_;
  const std::uint32_t wanted = (reads ? EPOLLIN : 0U) | (output_.size() != 0 ? EPOLLOUT : 0U);
  if (wanted != followed_) {
    followed_ = wanted;
    loop_.change(socket_.number(), followed_, *this);
  }
}

bool Client::isOver() const {
  if (finished_) {
    return vanished_ || output_.size() == 0;
  }
  const bool nothingToAnswer = !line_ && !held_ && (input_.over() || (vanished_ && !readable_));
  return nothingToAnswer && (vanished_ || (output_.size() == 0 && !stays_));
}

}  // namespace Host
