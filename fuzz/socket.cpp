// Bytes of a client: however they are cut into pieces on their way, the same lines come out, and
// what is no request and no change is refused at a place inside its line.

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "Input.h"
#include "protocol/RequestReader.h"
#include "text/LineReader.h"
#include "text/SourceText.h"

namespace {

/// Sends `text` in pieces of at most `piece` bytes through a pipe that is read after each.
std::vector<std::string> linesOf(std::string_view text, std::size_t piece) {
  std::array<int, 2> ends{};
  Fuzz::require(::pipe2(ends.data(), O_NONBLOCK) == 0, "there is a pipe");
  std::vector<std::string> lines;
  Host::InputLines input(ends[0], "the pipe");
  const auto take = [&] {
    input.fill();
    while (const auto line = input.ready()) {
      lines.emplace_back(*line);
    }
  };
  for (std::size_t at = 0; at < text.size(); at += piece) {
    const std::string_view next = text.substr(at, piece);
    Fuzz::require(::write(ends[1], next.data(), next.size()) == static_cast<ssize_t>(next.size()),
                  "the pipe takes a piece");
    take();
  }
  ::close(ends[1]);
  while (!input.over()) {
    take();
  }
  ::close(ends[0]);
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  // The first byte is the size of the pieces.
  const std::string_view text = Fuzz::textOf(data, size).substr(1);
  const auto lines = linesOf(text, 1U + data[0]);
  Host::Lines whole(text);
  for (const std::string& line : lines) {
    Fuzz::require(whole.next() == line, "the pieces do not matter");
    const Host::SourceText padded("line", line);
    static Host::RequestReader reader;
    if (!reader.isRequest(padded.text())) {
      continue;
    }
    Host::Request request;
    for (const Host::Fault& fault : reader.read(padded.text(), request)) {
      Fuzz::require(fault.offset <= line.size(), "a fault is inside the line");
      Fuzz::require(!fault.message.empty(), "a fault says what is wrong");
    }
  }
  Fuzz::require(!whole.next(), "no line is lost");
  return 0;
}
