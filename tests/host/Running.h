#pragma once

#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): mkdtemp is not in <cstdlib>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "command/CommandLine.h"

namespace HostTests {

/// A folder of its own for a test, gone at its end.
class Folder {
 public:
  Folder() : Folder(std::filesystem::temp_directory_path()) {}
  explicit Folder(const std::filesystem::path& in) {
    std::string name = (in / "vpm-test-XXXXXX").string();
    path_ = ::mkdtemp(name.data());
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }

  std::string path(std::string_view name) const { return (path_ / name).string(); }
  std::string write(std::string_view name, std::string_view text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }
  std::string read(std::string_view name) const {
    std::ostringstream text;
    text << std::ifstream(path(name), std::ios::binary).rdbuf();
    return text.str();
  }
  std::size_t files() const {
    const std::filesystem::directory_iterator all(path_);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

 private:
  std::filesystem::path path_;
};

/// What a run of the program came to.
struct Outcome {
  int exitCode;
  std::string out;
  std::string err;
};

inline Outcome runVpm(const std::vector<std::string>& arguments) {
  Host::TextSink out;
  std::ostringstream err;
  const int exitCode = Host::run(arguments, {out, err});
  return {exitCode, out.text(), err.str()};
}

/// Runs a line of shell with $VPM as the program beside this test.
inline Outcome shell(const std::string& line) {
  const std::string vpm = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "vpm";
  const std::string command = "VPM='" + vpm + "'; " + line;
  std::FILE* const pipe = ::popen(command.c_str(), "r");
  std::string out;
  std::array<char, 4096> piece;
  for (std::size_t got = 0; (got = std::fread(piece.data(), 1, piece.size(), pipe)) != 0;) {
    out.append(piece.data(), got);
  }
  const int status = ::pclose(pipe);
  return {WEXITSTATUS(status), out, ""};
}

}  // namespace HostTests
