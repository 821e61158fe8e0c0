// Whatever state the trees are in, an explanation says of every entry of version 2 that it is
// there, and of others that they are not, each with a reason.

#include <set>

#include "change/ChangeReader.h"
#include "explain/Explainer.h"
#include "host/Picture.h"
#include "host/RandomLines.h"
#include "observe/Observation.h"
#include "session/Session.h"
#include "text/SourceText.h"

namespace HostTests {
namespace {

class RandomisedExplainer : public testing::TestWithParam<unsigned> {
 protected:
  Host::Trees trees;
  Host::VirtualClock clock{0};
  Host::Translation translation{trees};
  Host::Session session{trees, translation, clock};
  Host::ChangeReader reader;

  /// The paths of the line; it is applied.
  std::vector<std::string> apply(const std::string& line) {
    Host::Change change;
    const std::string padded = line + std::string(Host::SourceText::kPadding, '\0');
    EXPECT_TRUE(reader.read(std::string_view(padded).substr(0, line.size()), change).empty());
    session.apply(change);
    std::vector<std::string> paths;
    for (const auto* const each : {&change.deletes, &change.notifies}) {
      for (const Host::TreePath& path : *each) {
        paths.push_back(Host::pathOf(stepsOf(path)));
      }
    }
    for (const Host::Edit& edit : change.updates) {
      paths.push_back(Host::pathOf(stepsOf(edit.path)));
    }
    return paths;
  }
  Host::Explanation explain(const std::string& text) const {
    Host::PathReader paths(Host::Content::everything);
    Host::TreePath path;
    EXPECT_TRUE(paths.read(text, path)) << text << ": " << paths.why();
    if (!Host::Explainer::whyNot(path).empty()) {
      return {text, false, {}, "", "none", "", {}};
    }
    return Host::Explainer(trees, translation, session.history()).explain(path);
  }
};

TEST_P(RandomisedExplainer, FindsWhatIsInVersion2AndAReasonForWhatIsNot) {
  RandomLines lines(GetParam());
  std::string log;
  std::vector<std::string> asked;
  std::size_t there = 0;
  std::size_t missing = 0;
  translation.start();
  for (int i = 0; i < 120; ++i) {
    log += lines.next() + "\n";
    const std::string last = log.substr(log.rfind('\n', log.size() - 2) + 1);
    for (std::string& path : apply(last.substr(0, last.size() - 1))) {
      asked.push_back(std::move(path));
    }
    EventLines now;
    Host::Observation(trees, {}).tellAll(now);
    std::set<std::string> present;
    for (const std::string& line : now.lines) {
      if (line.starts_with("add /vela-l3v2:")) {
        present.insert(line.substr(4));
      }
    }
    for (const std::string& path : present) {
      ++there;
      const Host::Explanation said = explain(path);
      ASSERT_TRUE(said.inVersion2) << path << " " << said.verdict << "\n" << log;
    }
    for (std::size_t j = asked.size() > 20 ? asked.size() - 20 : 0; j < asked.size(); ++j) {
      const Host::Explanation said = explain(asked[j]);
      ASSERT_TRUE(said.inVersion2 || !said.missing.empty()) << asked[j] << "\n" << log;
      missing += said.inVersion2 ? 0 : 1;
      if (said.inVersion2) {
        ASSERT_TRUE(said.steps.back().level == "timestamp" ||
                    said.steps.back().path.find("l3v2") != std::string::npos)
            << asked[j] << "\n"
            << log;
      }
    }
  }
  EXPECT_GT(there, 50U);
  EXPECT_GT(missing, 100U);
}
INSTANTIATE_TEST_SUITE_P(Seed, RandomisedExplainer, testing::Range(1U, 5U));

}  // namespace
}  // namespace HostTests
