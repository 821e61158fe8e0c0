// An audit that cries wolf is switched off: whatever is done to the trees through change lines, no
// difference may ever be called foreign or a defect.

#include <gtest/gtest.h>

#include <array>

#include "change/ChangeReader.h"
#include "host/RandomLines.h"
#include "session/Session.h"
#include "text/SourceText.h"

namespace HostTests {
namespace {

using Host::Difference;

class RandomisedAudit : public testing::TestWithParam<unsigned> {
 protected:
  Host::Trees trees;
  Host::VirtualClock clock{0};
  Host::Translation translation{trees};
  Host::Session session{trees, translation, clock};
  Host::ChangeReader reader;
  std::array<std::size_t, 4> found{};  // by class
  std::size_t applied = 0;

  void apply(const std::string& line) {
    Host::Change change;
    const std::string padded = line + std::string(Host::SourceText::kPadding, '\0');
    const auto faults = reader.read(std::string_view(padded).substr(0, line.size()), change);
    ASSERT_TRUE(faults.empty()) << line << "\n" << faults.front().message;
    clock.timeIs(clock.time() + 1);
    applied += session.apply(change) ? 0U : 1U;
    for (const Difference& difference : session.audit()) {
      ++found[static_cast<std::size_t>(difference.kind)];
      ASSERT_FALSE(isAlarming(difference.kind))
          << "after " << line << "\n"
          << difference.path << " is called " << nameOf(difference.kind) << ": " << difference.why;
    }
  }
};

TEST_P(RandomisedAudit, NeverCallsWhatTheLibraryDidADefect) {
  translation.start();
  RandomLines lines(GetParam());
  std::string log;
  for (int i = 0; i < 1500; ++i) {
    const std::string line = lines.next();
    log += line + "\n";
    ASSERT_NO_FATAL_FAILURE(apply(line)) << "seed " << GetParam() << ", the log so far:\n" << log;
  }
  EXPECT_GT(applied, 500U);
  EXPECT_GT(found[static_cast<std::size_t>(Difference::Kind::pending)], 0U);
  EXPECT_GT(found[static_cast<std::size_t>(Difference::Kind::asDesigned)], 0U);
}
INSTANTIATE_TEST_SUITE_P(Seed, RandomisedAudit, testing::Range(1U, 7U));

}  // namespace
}  // namespace HostTests
