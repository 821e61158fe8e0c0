#include "text/LineReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

namespace HostTests {
namespace {

using Host::InputLines;

/// A pipe whose reading end does not wait.
class Pipe {
 public:
  Pipe() { EXPECT_EQ(::pipe2(ends_.data(), O_NONBLOCK | O_CLOEXEC), 0); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    ::close(ends_[0]);
    end();
  }

  int reader() const { return ends_[0]; }
  void put(const std::string& text) const {
    EXPECT_EQ(::write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void end() {
    if (ends_[1] >= 0) {
      ::close(ends_[1]);
      ends_[1] = -1;
    }
  }

 private:
  std::array<int, 2> ends_{-1, -1};
};

TEST(InputLines, LeavesOutAByteOrderMarkBeforeTheFirstLine) {
  Pipe pipe;
  InputLines lines(pipe.reader(), "the pipe");
  pipe.put("\xef\xbb");
  lines.fill();
  pipe.put("\xbfone\n\xef\xbb\xbftwo\n");
  lines.fill();
  EXPECT_EQ(lines.ready(), "one");
  EXPECT_EQ(lines.ready(), "\xef\xbb\xbftwo");
  EXPECT_EQ(Host::Lines("\xef\xbb\xbfone\r\n").next(), "one");
}

TEST(InputLines, HandsOutALineOnlyOnceItIsWhole) {
  Pipe pipe;
  InputLines lines(pipe.reader(), "the pipe");
  lines.fill();
  EXPECT_EQ(lines.ready(), std::nullopt);
  pipe.put("one\r\ntw");
  lines.fill();
  EXPECT_EQ(lines.ready(), "one");
  EXPECT_EQ(lines.ready(), std::nullopt);
  EXPECT_EQ(lines.waiting(), 2U);
  pipe.put("o\n\nlast");
  lines.fill();
  EXPECT_EQ(lines.ready(), "two");
  EXPECT_EQ(lines.ready(), "");
  EXPECT_EQ(lines.number(), 3U);
  EXPECT_EQ(lines.ready(), std::nullopt);
  EXPECT_FALSE(lines.over());
  pipe.end();
  lines.fill();
  EXPECT_TRUE(lines.over());
  EXPECT_EQ(lines.ready(), "last");
  EXPECT_EQ(lines.ready(), std::nullopt);
  EXPECT_EQ(lines.number(), 4U);
}

TEST(InputLines, SayWhichInputCannotBeRead) {
  InputLines lines(-1, "the pipe");
  try {
    lines.next();
    FAIL() << "a descriptor that is none was read";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "the pipe cannot be read: Bad file descriptor");
  }
}

}  // namespace
}  // namespace HostTests
