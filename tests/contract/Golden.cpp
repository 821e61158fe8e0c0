#include "contract/Golden.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace Contract {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// The lines of one text only, with - or + in front, and the last common line above each run.
std::string diff(const std::vector<std::string>& old, const std::vector<std::string>& now) {
  // How many lines old[i..] and now[j..] have in common, in order.
  std::vector<std::vector<std::size_t>> common(old.size() + 1,
                                               std::vector<std::size_t>(now.size() + 1));
  for (std::size_t i = old.size(); i-- != 0;) {
    for (std::size_t j = now.size(); j-- != 0;) {
      common[i][j] = old[i] == now[j] ? common[i + 1][j + 1] + 1
                                      : std::max(common[i + 1][j], common[i][j + 1]);
    }
  }
  std::string out;
  std::string context;
  const auto show = [&](char sign, const std::string& line) {
    out += std::exchange(context, "") + sign + line + "\n";
  };
  std::size_t i = 0;
  std::size_t j = 0;
  while (i != old.size() || j != now.size()) {
    if (i != old.size() && j != now.size() && old[i] == now[j]) {
      context = " " + old[i] + "\n";
      ++i;
      ++j;
    } else if (j == now.size() || (i != old.size() && common[i + 1][j] >= common[i][j + 1])) {
      show('-', old[i++]);
    } else {
      show('+', now[j++]);
    }
  }
  return out;
}

}  // namespace

void expectGolden(const std::string& name, const std::string& printed) {
  const auto path = std::filesystem::path(VELA_GOLDEN_FOLDER) / name;
  if (std::getenv("VELA_REGENERATE_GOLDEN") != nullptr) {
    std::ofstream(path) << printed;
    return;
  }
  std::ostringstream golden;
  golden << std::ifstream(path).rdbuf();
  EXPECT_EQ(diff(linesOf(golden.str()), linesOf(printed)), "")
      << path << " (-) is not what the program prints (+). If the change is meant, write the file "
      << "anew with VELA_REGENERATE_GOLDEN=1 and read what has changed.";
}

}  // namespace Contract
