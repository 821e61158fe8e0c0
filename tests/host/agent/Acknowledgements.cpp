#include "agent/Acknowledgements.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <array>

namespace HostTests {
namespace {

class Acknowledgements : public testing::Test {
 protected:
  static Host::Descriptor oneEnd(int& other) {
    std::array<int, 2> ends{};
    ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends.data());
    other = ends[1];
    return Host::Descriptor(ends[0]);
  }
  /// What the client on the other end reads now.
  static std::string read(int end) {
    std::array<char, 1000> bytes{};
    const ssize_t got = ::recv(end, bytes.data(), bytes.size(), MSG_DONTWAIT);
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0))};
  }
  void answer(Host::Client& client, std::size_t number, std::string_view text) {
    const std::size_t begin = client.output().size();
    client.output().write(text);
    given_.add(client, number, begin);
  }

  int end_ = -1;
  int otherEnd_ = -1;
  Host::Loop loop_;
  Host::Client client_{oneEnd(end_), loop_};
  Host::Client other_{oneEnd(otherEnd_), loop_};
  Host::Descriptor ends_[2]{Host::Descriptor(end_), Host::Descriptor(otherEnd_)};
  Host::Acknowledgements given_;
};

TEST_F(Acknowledgements, AreSentWhenAllIsGood) {
  answer(client_, 1, "one\n");
  given_.good();
  given_.takeBack("too late");
  client_.send();
  EXPECT_EQ(read(end_), "one\n");
}

TEST_F(Acknowledgements, BecomeErrorsAndOtherAnswersStayWhatTheyAre) {
  client_.output().write("earlier\n");
  answer(client_, 2, "{\"line\":2}\n");
  answer(other_, 1, "{\"line\":1,\"v2\":{}}\n");
  client_.output().write("between\n");
  answer(client_, 4, "{\"line\":4}\n");
  client_.output().write("later\n");
  given_.takeBack("no disk");
  client_.send();
  other_.send();
  EXPECT_EQ(read(end_),
            "earlier\n{\"line\":2,\"error\":\"no disk\"}\nbetween\n"
            "{\"line\":4,\"error\":\"no disk\"}\nlater\n");
  EXPECT_EQ(read(otherEnd_), "{\"line\":1,\"error\":\"no disk\"}\n");
}

}  // namespace
}  // namespace HostTests
