// vpm trace on core files that are put together here, so that each has just what its test is about.
// Cores of real processes are in tests/project/gdb_test.py.

#include <elf.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "Lumo/Packet.h"
#include "host/Running.h"

namespace HostTests {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

template <class T>
std::string bytesOf(const T& object) {
  return {reinterpret_cast<const char*>(&object), sizeof object};
}

/// A trace of a run whose ring has wrapped, and cores of processes that would have written it.
class TraceCore : public testing::Test {
 protected:
  TraceCore() {
    std::string log;
    for (int i = 0; i < 1000; ++i) {
      log += R"({"time":)" + std::to_string(i) +
             R"(,"update":[{"path":"/vela-l3:policy-source/policy-set[device-name='fw)" +
             std::to_string(i) + R"(']","value":{}}]})" + "\n";
    }
    const Outcome run = runVpm({"replay", "--trace-file", folder.path("trace"), "--trace-size",
                                "32K", folder.write("log", log)});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (int i = 0; i < kSegments; ++i) {
      segments.push_back(folder.read("trace/segment-000" + std::to_string(i)));
    }
    metadata = folder.read("trace/metadata");
  }

  static constexpr int kSegments = 8;

  static std::string image(const std::string& text) {
    return bytesOf(Lumo::MetadataHeader{Lumo::MetadataHeader::kMagic, text.size()}) + text;
  }
  static Lumo::PacketHeader header(const std::string& segment) {
    Lumo::PacketHeader header{};
    std::memcpy(&header, segment.data(), sizeof header);
    return header;
  }

  /// A note that names mapped files.
  static std::string files(const std::vector<std::string>& names) {
    std::string text = bytesOf(std::uint64_t{names.size()}) + bytesOf(std::uint64_t{4096}) +
                       std::string(names.size() * 24, '\0');
    for (const std::string& name : names) {
      text += name + '\0';
    }
    const Elf64_Nhdr note{5, static_cast<Elf64_Word>(text.size()), NT_FILE};
    text.resize((text.size() + 3) / 4 * 4);
    return bytesOf(note) + std::string("CORE\0\0\0\0", 8) + text;
  }

  /// The path of a core with these pieces of memory.
  std::string core(const std::vector<std::string>& areas, const std::string& notes = "") {
    Elf64_Ehdr elf{};
    std::memcpy(elf.e_ident, ELFMAG, SELFMAG);
    elf.e_ident[EI_CLASS] = ELFCLASS64;
    elf.e_ident[EI_DATA] = ELFDATA2LSB;
    elf.e_type = ET_CORE;
    elf.e_phoff = sizeof elf;
    elf.e_phnum = static_cast<Elf64_Half>(areas.size() + 1);
    std::string table;
    std::string content;
    const auto add = [&](Elf64_Word type, const std::string& bytes) {
      Elf64_Phdr entry{};
      entry.p_type = type;
      entry.p_offset = sizeof elf + elf.e_phnum * sizeof entry + content.size();
      entry.p_filesz = bytes.size();
      table += bytesOf(entry);
      content += bytes;
    };
    add(PT_NOTE, notes);
    for (const std::string& area : areas) {
      add(PT_LOAD, area);
    }
    return folder.write("core", bytesOf(elf) + table + content);
  }
  /// The whole ring, with other memory around it.
  std::vector<std::string> ring() const {
    std::vector<std::string> areas = segments;
    areas.insert(areas.begin(), "other memory, and not even a page of it");
    areas.push_back(image(metadata));
    return areas;
  }

  std::string folderLines() const { return runVpm({"trace", folder.path("trace")}).out; }
  static std::string refused(const std::string& path) {
    const Outcome outcome = runVpm({"trace", path});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.out, "");
    return outcome.err;
  }

  Folder folder;
  std::vector<std::string> segments;
  std::string metadata;
};

TEST_F(TraceCore, IsPrintedAsItsFolderIs) {
  const Outcome shown = runVpm({"trace", core(ring())});
  EXPECT_EQ(shown.out, folderLines());
  EXPECT_EQ(shown.err, "");
  EXPECT_EQ(shown.exitCode, 0);
  EXPECT_THAT(shown.out, HasSubstr("\n999.000000 "));
  EXPECT_EQ(runVpm({"trace", folder.path("core"), "--stats", "--json"}).out,
            runVpm({"trace", folder.path("trace"), "--stats", "--json"}).out);
}

TEST_F(TraceCore, MayHaveTheRingAnywhereInOnePieceOfMemory) {
  std::string memory(4 * 4096, 'x');
  for (const std::string& segment : segments) {
    memory += segment;
  }
  EXPECT_EQ(runVpm({"trace", core({memory, std::string(4096, '\0') + image(metadata)})}).out,
            folderLines());
}

TEST_F(TraceCore, OfAProcessThatReplacedItsMetadataIsReadWithTheNewerOnes) {
  std::string older = metadata.substr(0, metadata.rfind("event {"));
  const std::size_t site = older.rfind("  site_");
  older.erase(site, older.find('\n', site) + 1 - site);
  for (const bool olderFirst : {true, false}) {
    std::vector<std::string> areas = ring();
    areas.insert(olderFirst ? areas.begin() : areas.end(), image(older));
    const Outcome shown = runVpm({"trace", core(areas)});
    EXPECT_EQ(shown.err, "");
    EXPECT_EQ(shown.out, folderLines());
  }
}

TEST_F(TraceCore, WithTwoRingsIsThatOfTheOneWrittenLast) {
  std::vector<std::string> areas = ring();
  const std::string uuid = metadata.substr(metadata.find("uuid = \"") + 8, 36);
  for (const std::string& segment : segments) {
    Lumo::PacketHeader other = header(segment);
    other.uuid[0] = static_cast<std::uint8_t>(other.uuid[0] ^ 0xFFU);
    other.end = 1;
    areas.push_back(bytesOf(other) + segment.substr(sizeof other));
  }
  std::string renamed = metadata;
  const int digits = std::stoi(uuid.substr(0, 2), nullptr, 16) ^ 0xFF;
  char text[3];
  std::snprintf(text, sizeof text, "%02x", static_cast<unsigned>(digits));
  renamed.replace(renamed.find(uuid), 2, text);
  areas.push_back(image(renamed));
  EXPECT_EQ(runVpm({"trace", core(areas)}).out, folderLines());
}

TEST_F(TraceCore, WithoutTheMappedFilesTellsWhereTheyAreAndHowToGetThem) {
  const std::string notes =
      files({"/usr/bin/agent", "/run/vela/trace/segment-0000", "/run/vela/trace/segment-0001"});
  EXPECT_EQ(refused(core({std::string(4096, '\0'), image(metadata)}, notes)),
            "vpm: error: " + folder.path("core") +
                ": there is no trace in this core file. It was in files, which a core leaves out "
                "unless bit 3 is set in /proc/PID/coredump_filter (0x3b, not 0x33). They have it "
                "still: vpm trace /run/vela/trace, or /run/vela/trace.previous if another process "
                "has traced there since\n");
}

TEST_F(TraceCore, WithoutATraceOrWithHalfOfOneSaysSo) {
  EXPECT_THAT(refused(core({"memory"}, files({"/usr/bin/agent"}))),
              EndsWith("there is no trace in this core file; the process wrote none\n"));
  EXPECT_THAT(
      refused(core(segments)),
      EndsWith("in this core file, only a part of one; parts of the memory were left out\n"));
}

TEST_F(TraceCore, ThatWasCutOffIsPrintedUpToTheCut) {
  std::vector<std::string> areas = ring();
  std::swap(areas.front(), areas.back());  // the metadata come first
  const auto last = std::ranges::max_element(
      segments, {}, [](const std::string& segment) { return header(segment).sequence; });
  std::iter_swap(areas.end() - 2, areas.begin() + 1 + (last - segments.begin()));
  areas.pop_back();
  const std::string path = core(areas);
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - 4096 + 200);
  const Outcome shown = runVpm({"trace", path});
  EXPECT_EQ(shown.exitCode, 3);
  EXPECT_THAT(shown.err, HasSubstr("the core file was cut off; its last records are missing"));
  EXPECT_THAT(shown.out, Not(IsEmpty()));
  EXPECT_EQ(shown.out, folderLines().substr(0, shown.out.size()));

  std::filesystem::resize_file(path, 3000);
  EXPECT_THAT(refused(path), HasSubstr("bytes were cut off; expected a whole one"));
}

TEST_F(TraceCore, WithoutASegmentInTheMiddleHasTheLinesAroundTheGap) {
  std::vector<std::string> bySequence = segments;
  std::ranges::sort(bySequence, {}, [](const auto& segment) { return header(segment).sequence; });
  std::vector<std::string> areas = ring();
  std::erase(areas, bySequence[kSegments / 2]);
  const Outcome shown = runVpm({"trace", core(areas)});
  EXPECT_EQ(shown.exitCode, 3);
  EXPECT_THAT(shown.err, HasSubstr("what was written before it is missing: 1 segments"));
  EXPECT_THAT(shown.out, HasSubstr("\n999.000000 "));
  EXPECT_EQ(shown.out.substr(0, 1000), folderLines().substr(0, 1000));
}

TEST_F(TraceCore, GetsNothingMoreSoThatItCannotBeFollowed) {
  const Outcome outcome = runVpm({"trace", core(ring()), "--follow"});
  EXPECT_EQ(outcome.exitCode, 2);
  EXPECT_THAT(outcome.err, EndsWith("nothing more comes to a core file; leave out --follow\n"));
}

TEST_F(TraceCore, MustBeACoreOfA64BitProcess) {
  const std::string whole = core(ring());
  std::string bytes = folder.read("core");
  bytes[EI_CLASS] = ELFCLASS32;
  EXPECT_THAT(refused(folder.write("small", bytes)),
              EndsWith("small: this is no core file of a 64-bit process\n"));
  EXPECT_THAT(refused(std::filesystem::read_symlink("/proc/self/exe")),
              EndsWith("this is no core file of a 64-bit process\n"));
  EXPECT_THAT(refused(folder.write("head", bytes.substr(0, 5))), EndsWith("64-bit process\n"));
}

TEST_F(TraceCore, OfTooManyPiecesForItsHeaderIsReadToo) {
  std::vector<std::string> areas = ring();
  core(areas);
  std::string bytes = folder.read("core");
  Elf64_Ehdr elf{};
  std::memcpy(&elf, bytes.data(), sizeof elf);
  Elf64_Shdr section{};
  section.sh_info = elf.e_phnum;
  elf.e_phnum = PN_XNUM;
  elf.e_shoff = bytes.size();
  bytes.replace(0, sizeof elf, bytesOf(elf));
  EXPECT_EQ(runVpm({"trace", folder.write("many", bytes + bytesOf(section))}).out, folderLines());
}

}  // namespace
}  // namespace HostTests
