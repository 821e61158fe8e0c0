#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <fstream>

#include "Lumo/Segments.h"
#include "TraceTools.h"
#include "support/FailingCall.h"
#include "support/Interruptions.h"

namespace {

using LumoTest::Folder;
using TestSupport::FailingCall;
using TestSupport::withFailing;

TEST(Segments, LimitsAreStated) {
  std::string why;
  for (const auto& [size, count] : std::initializer_list<std::pair<std::size_t, std::size_t>>{
           {4095, 4}, {0, 4}, {4097, 4}, {4096, 1}, {4096, 4097}, {std::size_t{1} << 31U, 2}}) {
    EXPECT_EQ(Lumo::Segments::inMemory(size, count, why), nullptr) << size << " " << count;
    EXPECT_EQ(why,
              std::to_string(count) + " trace segments of " + std::to_string(size) +
                  " bytes are not possible; expected 2 to 4096 segments of 4096 bytes to 1 GiB, "
                  "in steps of 4096 bytes");
  }
}

TEST(Segments, FilesHaveTheirFullSizeAndSpaceFromTheBeginning) {
  const Folder folder("segments");
  const auto ring = LumoTest::openRing(folder.path(), 8192, 3);
  for (const char* name : {"segment-0000", "segment-0001", "segment-0002"}) {
    struct stat status {};
    ASSERT_EQ(stat((folder.path() + "/" + name).c_str(), &status), 0);
    EXPECT_EQ(status.st_size, 8192);
    EXPECT_GE(status.st_blocks * 512, 8192);
  }
  EXPECT_FALSE(folder.has("segment-0003"));
}

TEST(Segments, WhatTheProcessBeforeLeftIsKeptOnce) {
  const Folder folder("previous");
  const Lumo::Site& site = LumoTest::siteWith(LumoTest::kNumber);
  for (std::uint32_t process = 1; process <= 3; ++process) {
    const auto ring = LumoTest::openRing(folder.path(), 4096, process == 1 ? 5 : 2);
    LumoTest::put(*ring, site, process);
  }
  const auto present = LumoTest::readWithBabeltrace(folder.path());
  ASSERT_EQ(present.lines.size(), 1U) << present.errors;
  EXPECT_NE(present.lines[0].find("number = 3"), std::string::npos);
  const auto previous = LumoTest::readWithBabeltrace(folder.previous());
  ASSERT_EQ(previous.lines.size(), 1U) << previous.errors;
  EXPECT_NE(previous.lines[0].find("number = 2"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(folder.previous() + "/segment-0002"))
      << "segments of the first process are not mixed with those of the second";
}

/// Whatever lies there, also what belongs to nobody.
[[gnu::no_sanitize_address, gnu::no_sanitize_thread]] std::uint64_t wordAt(std::size_t address) {
  return *reinterpret_cast<const std::uint64_t*>(address);
}

/// The texts behind the headers that a search through the memory of this process finds.
std::vector<std::string> metadataInMemory() {
  std::vector<std::string> found;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::size_t rest = 0;
    const std::size_t begin = std::stoul(line, &rest, 16);
    const std::size_t end = std::stoul(line.substr(rest + 1), nullptr, 16);
    constexpr std::size_t kLargest = std::size_t{1} << 26U;  // a sanitizer has terabytes
    if (line.find(" rw-p ") == std::string::npos || end - begin > kLargest) {
      continue;
    }
    for (std::size_t page = begin; page < end; page += 4096) {
      if (wordAt(page) == Lumo::MetadataHeader::kMagic) {
        const auto* const text = reinterpret_cast<const char*>(page) + sizeof(Lumo::MetadataHeader);
        found.emplace_back(text, wordAt(page + offsetof(Lumo::MetadataHeader, bytes)));
      }
    }
  }
  return found;
}

TEST(Segments, OneCopyOfTheMetadataLiesInMemoryForACoreFile) {
  const Folder folder("metadata");
  auto ring = LumoTest::openRing(folder.path());
  EXPECT_THAT(metadataInMemory(), testing::ElementsAre(folder.content("metadata")));
  LumoTest::put(*ring, LumoTest::siteWith(LumoTest::kNumber), 1U);
  EXPECT_THAT(metadataInMemory(), testing::ElementsAre(folder.content("metadata")));
  ring.reset();
  EXPECT_THAT(metadataInMemory(), testing::IsEmpty());

  std::string why;
  ring = Lumo::TraceFile::inMemory(4096, 2, why);
  LumoTest::put(*ring, LumoTest::siteWith(LumoTest::kNumber), 1U);
  EXPECT_THAT(metadataInMemory(), testing::ElementsAre(testing::StartsWith("/* CTF 1.8 */")));
}

TEST(Segments, WhatTheProcessBeforeLeftIsKeptAlsoWithoutItsMetadata) {
  const Folder folder("headless");
  std::filesystem::create_directory(folder.path());
  std::ofstream(folder.path() + "/segment-0000") << "older";
  LumoTest::openRing(folder.path());
  EXPECT_EQ(std::filesystem::file_size(folder.previous() + "/segment-0000"), 5U);
}

/// Why a ring is not opened where an earlier process has left a trace, which stays where it is.
std::string whyNotPutAside(const Folder& folder) {
  std::filesystem::create_directory(folder.path());
  std::ofstream(folder.path() + "/metadata") << "text";
  std::ofstream(folder.path() + "/segment-0000") << "older";
  std::string why;
  EXPECT_EQ(Lumo::TraceFile::open(folder.path(), 4096, 2, why), nullptr);
  EXPECT_EQ(folder.content("metadata"), "text");
  EXPECT_EQ(folder.content("segment-0000"), "older");
  return why;
}

TEST(Segments, ATraceThatCannotBePutAsideIsNotOverwritten) {
  const Folder file("beside");
  std::ofstream(file.previous()) << "x";
  EXPECT_EQ(whyNotPutAside(file), "cannot open " + file.previous() +
                                      " for the trace of the previous process: Not a directory");

  const Folder longest(std::string(242, 'x'));
  EXPECT_EQ(whyNotPutAside(longest),
            "cannot create " + longest.previous() +
                " for the trace of the previous process: File name too long");

  for (const char* name : {"/metadata", "/segment-0000"}) {
    const Folder occupied("occupied");
    std::filesystem::create_directories(occupied.previous() + name);
    EXPECT_EQ(whyNotPutAside(occupied), "cannot move the trace of the previous process from " +
                                            occupied.path() + " to " + occupied.previous() +
                                            ": Is a directory");
  }
}

TEST(Segments, MetadataThatCannotBePutAsideAreNotOverwritten) {
  const Folder folder("fixed");
  std::filesystem::create_directory(folder.path());
  std::ofstream(folder.path() + "/metadata") << "text";
  std::string why;
  withFailing({SYS_renameat, EXDEV},
              [&] { EXPECT_EQ(Lumo::TraceFile::open(folder.path(), 4096, 2, why), nullptr); });
  EXPECT_EQ(why, "cannot move the trace of the previous process from " + folder.path() + " to " +
                     folder.previous() + ": Invalid cross-device link");
  EXPECT_EQ(folder.content("metadata"), "text");
}

TEST(Segments, FilesThatAreNotOfATraceAreLeftAlone) {
  const Folder folder("foreign");
  std::filesystem::create_directory(folder.path());
  std::filesystem::create_directory(folder.previous());
  std::ofstream(folder.path() + "/metadata") << "x";
  std::ofstream(folder.path() + "/notes") << "mine";
  std::ofstream(folder.previous() + "/notes") << "older";
  LumoTest::openRing(folder.path());
  EXPECT_EQ(folder.content("notes"), "mine");
  EXPECT_EQ(folder.content("../" + std::filesystem::path(folder.previous()).filename().string() +
                           "/notes"),
            "older");
}

TEST(Segments, TwoProcessesDoNotShareADirectory) {
  const Folder folder("shared");
  const auto ring = LumoTest::openRing(folder.path());
  std::string why;
  EXPECT_EQ(Lumo::TraceFile::open(folder.path(), 4096, 4, why), nullptr);
  EXPECT_EQ(why, "trace directory " + folder.path() +
                     " is in use by another process; give each its own directory");
}

TEST(Segments, ADirectoryThatCannotBeMadeSaysWhichAndWhy) {
  std::string why;
  EXPECT_EQ(Lumo::TraceFile::open("/no/such/folder", 4096, 4, why), nullptr);
  EXPECT_EQ(why, "cannot create trace directory /no/such/folder: No such file or directory");
  const Folder folder("file");
  std::ofstream(folder.path()) << "x";
  EXPECT_EQ(Lumo::TraceFile::open(folder.path(), 4096, 4, why), nullptr);
  EXPECT_EQ(why, "cannot open trace directory " + folder.path() + ": Not a directory");
}

TEST(Segments, AFileThatCannotBeMadeSaysWhichAndWhy) {
  const Folder folder("taken");
  std::filesystem::create_directories(folder.path() + "/segment-0001");
  std::string why;
  EXPECT_EQ(Lumo::TraceFile::open(folder.path(), 4096, 4, why), nullptr);
  EXPECT_EQ(why, "cannot create trace file segment-0001: Is a directory");
}

TEST(Segments, WhatTheSystemRefusesSaysWhatAndWhy) {
  const Folder folder("refused");
  const auto whyNot = [&folder](const FailingCall& call) {
    std::string why;
    withFailing(call,
                [&] { EXPECT_EQ(Lumo::Segments::onDisk(folder.path(), 12288, 2, why), nullptr); });
    return why;
  };
  EXPECT_EQ(whyNot({SYS_flock, ENOLCK}),
            "cannot lock trace directory " + folder.path() + ": No locks available");
  EXPECT_EQ(whyNot({SYS_mmap, ENOMEM, 3, MAP_SHARED | MAP_FIXED | MAP_POPULATE}),
            "cannot map trace file segment-0000 into memory: Cannot allocate memory");
  EXPECT_EQ(whyNot({SYS_mmap, ENOMEM, 1, 2 * 12288}),
            "no memory for 2 trace segments of 12288 bytes: Cannot allocate memory");
}

TEST(Segments, AFullDiskIsAnErrorWhenTheRingIsOpenedNotLater) {
  const Folder folder("full");
  const pid_t child = fork();
  if (child == 0) {  // a limit on the size of files stands for a full disk
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::string why;
    const bool refused = Lumo::TraceFile::open(folder.path(), 8192, 4, why) == nullptr;
    const bool said =
        why == "cannot reserve 8192 bytes for trace file segment-0000: File too large";
    _exit(refused && said ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

/// A folder with a file `name` that is to be replaced.
class Replacing {
 public:
  Replacing() {
    std::filesystem::create_directory(folder.path());
    std::ofstream(folder.path() + "/name") << "old";
    directory_ = open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
  }
  Replacing(const Replacing&) = delete;
  Replacing& operator=(const Replacing&) = delete;
  ~Replacing() { close(directory_); }

  bool replace(const std::string& text) const {
    return Lumo::replaceFile(directory_, "name", std::as_bytes(std::span(text)));
  }
  /// Where the new file is written before it takes the place of the old one.
  std::string aside() const { return folder.path() + "/.name.new"; }

  const Folder folder{"replacing"};

 private:
  int directory_;
};

TEST(ReplaceFile, PutsTheNewContentInThePlaceOfTheOld) {
  const Replacing file;
  EXPECT_TRUE(file.replace("new"));
  EXPECT_EQ(file.folder.content("name"), "new");
  EXPECT_FALSE(std::filesystem::exists(file.aside()));
}

TEST(ReplaceFile, LeavesTheOldContentWhereTheNewCannotBeMade) {
  const Replacing file;
  std::filesystem::create_directory(file.aside());
  EXPECT_FALSE(file.replace("new"));
  EXPECT_EQ(file.folder.content("name"), "old");
}

TEST(ReplaceFile, LeavesAFolderWhereItIs) {
  const Replacing file;
  std::filesystem::remove(file.folder.path() + "/name");
  std::filesystem::create_directory(file.folder.path() + "/name");
  EXPECT_FALSE(file.replace("new"));
  EXPECT_TRUE(std::filesystem::is_directory(file.folder.path() + "/name"));
}

TEST(ReplaceFile, LeavesTheOldContentOnAFullDisk) {
  const Replacing file;
  std::filesystem::create_symlink("/dev/full", file.aside());
  EXPECT_FALSE(file.replace("new"));
  EXPECT_EQ(file.folder.content("name"), "old");
}

TEST(ReplaceFile, LeavesTheOldContentWhenTheSystemReportsLateThatItWasNotWritten) {
  const Replacing file;
  withFailing({SYS_close, EIO}, [&] { EXPECT_FALSE(file.replace("new")); });
  EXPECT_EQ(file.folder.content("name"), "old");
}

TEST(ReplaceFile, GoesOnAfterASignal) {
  const Replacing file;
  ASSERT_EQ(mkfifo(file.aside().c_str(), 0600), 0);  // a pipe lets a write wait
  const int end = open(file.aside().c_str(), O_RDWR);
  const std::string text(200'000, 'x');
  std::string arrived;
  TestSupport::withInterruptions([&] { EXPECT_TRUE(file.replace(text)); },
                                 [&] {
                                   std::array<char, 4096> buffer{};
                                   while (arrived.size() < text.size()) {
                                     const ssize_t got = read(end, buffer.data(), buffer.size());
                                     arrived.append(buffer.data(), static_cast<std::size_t>(got));
                                   }
                                 });
  close(end);
  EXPECT_EQ(arrived, text);
}

}  // namespace
