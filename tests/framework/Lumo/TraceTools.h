#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Lumo/Lumo.h"

namespace LumoTest {

inline constexpr Lumo::ValueType kNumber{Lumo::Kind::natural, 4, "uint32_t"};
inline constexpr Lumo::ValueType kBlock{Lumo::Kind::bytes, 1000, "Test::Block"};
inline constexpr Lumo::ValueType kText{Lumo::Kind::text, 0, "Kel::String"};

/// A folder that is removed, with what lies in it, at the end.
class Folder {
 public:
  explicit Folder(const std::string& name)
      : path_(testing::TempDir() + "lumo-" + std::to_string(getpid()) + "-" + name) {
    clear();
  }
  ~Folder() { clear(); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  const std::string& path() const { return path_; }
  std::string previous() const { return path_ + ".previous"; }
  bool has(const std::string& file) const { return std::filesystem::exists(path_ + "/" + file); }
  std::string content(const std::string& file) const {
    std::ifstream in(path_ + "/" + file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

 private:
  void clear() const {
    std::error_code ignored;  // of a name that cannot be
    std::filesystem::remove_all(path_, ignored);
    std::filesystem::remove_all(previous(), ignored);
  }
  std::string path_;
};

inline std::unique_ptr<Lumo::TraceFile> openRing(const std::string& path, std::size_t size = 4096,
                                                 std::size_t count = 4) {
  std::string why;
  auto ring = Lumo::TraceFile::open(path, size, count, why);
  EXPECT_NE(ring, nullptr) << why;
  return ring;
}

inline std::unique_ptr<Lumo::TraceFile> memoryRing(std::size_t size = 4096, std::size_t count = 4) {
  std::string why;
  auto ring = Lumo::TraceFile::inMemory(size, count, why);
  EXPECT_NE(ring, nullptr) << why;
  return ring;
}

/// A site with one value after a literal.
inline const Lumo::Site& siteWith(const Lumo::ValueType& type, std::string_view form = "f()") {
  Lumo::Site site;
  site.facility = "VelaPolicyMonitor";
  site.level = 6;
  site.file = "some/folder/Source.cpp";
  site.line = 41;
  site.scope = "void Space::Class::";
  site.form = form;
  site.pieces = {{" number: ", nullptr}, {"", &type}};
  return Lumo::registerSite(std::move(site));
}

/// Writes a record with a plain value; whether it was taken.
template <class T>
bool put(Lumo::TraceFile& ring, const Lumo::Site& site, const T& value, std::uint64_t stamp = 0,
         double seconds = 0) {
  std::byte* const place = ring.begin(site.id, sizeof value, stamp, seconds);
  if (place != nullptr) {
    std::memcpy(place, &value, sizeof value);
    ring.finish(place + sizeof value);
  }
  return place != nullptr;
}

/// The first four bytes of every record, oldest record first; also checks that stamps rise.
inline std::vector<std::uint32_t> numbersIn(std::span<const std::byte> memory, std::size_t size) {
  std::vector<std::uint32_t> numbers;
  std::uint64_t last = 0;
  EXPECT_TRUE(Lumo::forEachRecord(memory, size, Lumo::siteOf, [&](const Lumo::Record& record) {
    EXPECT_GT(record.stamp, last);
    last = record.stamp;
    std::uint32_t number = 0;
    std::memcpy(&number, record.values.at(0).bytes.data(), sizeof number);
    numbers.push_back(number);
  }));
  return numbers;
}
inline std::vector<std::uint32_t> numbersIn(const Lumo::TraceFile& ring) {
  return numbersIn(ring.memory(), ring.segmentSize());
}

/// What the field's own reader makes of a folder.
struct Reading {
  int status = -1;  ///< 0: read without an error
  std::vector<std::string> lines;
  std::string errors;
};

inline Reading readWithBabeltrace(const std::string& folder, const std::string& options = "") {
  Reading reading;
  const std::string errors = folder + ".stderr";
  const std::string command = "babeltrace2 " + options + " '" + folder + "' 2>'" + errors + "'";
  FILE* const pipe = popen(command.c_str(), "r");
  std::string text;
  char buffer[4096];
  for (std::size_t got = 0; (got = fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    text.append(buffer, got);
  }
  reading.status = pclose(pipe);
  for (std::size_t at = 0, end = 0; (end = text.find('\n', at)) != std::string::npos;
       at = end + 1) {
    reading.lines.push_back(text.substr(at, end - at));
  }
  std::ifstream in(errors);
  reading.errors.assign(std::istreambuf_iterator<char>(in), {});
  std::filesystem::remove(errors);
  return reading;
}

}  // namespace LumoTest
