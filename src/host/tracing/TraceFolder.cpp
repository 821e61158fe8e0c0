#include "tracing/TraceFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "text/Concat.h"
#include "tracing/TraceError.h"

namespace Host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kHeader = sizeof(Lumo::PacketHeader);

/// A file that is read at places of its own.
class OpenFile {
 public:
  explicit OpenFile(const std::string& name)
      : name_(name), descriptor_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) {
      fail();
    }
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(descriptor_); }

  /// As many bytes as there are, up to `size`.
  std::size_t read(void* to, std::size_t size, std::size_t at) const {
    std::size_t done = 0;
    while (done < size) {
      const ssize_t got = ::pread(descriptor_, static_cast<char*>(to) + done, size - done,
                                  static_cast<off_t>(at + done));
      if (got < 0 && errno != EINTR) {
        fail();
      }
      if (got == 0) {
        break;
      }
      done += got < 0 ? 0 : static_cast<std::size_t>(got);
    }
    return done;
  }

  Lumo::PacketHeader header() const {
    Lumo::PacketHeader header{};
    read(&header, kHeader, 0);
    const std::uint64_t bits = header.contentBits;
    if (header.magic != Lumo::PacketHeader::kMagic || bits < kHeader * 8 ||
        bits > header.packetBits) {
      throw TraceError(concat({name_, ": this is no segment of a trace"}));
    }
    return header;
  }

 private:
  [[noreturn]] void fail() const {
    throw TraceError(concat({name_, ": cannot be read: ", std::strerror(errno)}));
  }

  const std::string& name_;
  int descriptor_;
};

}  // namespace

TraceFolder::TraceFolder(fs::path path) : folder_(std::move(path)) {
  if (!folder_.has_filename()) {
    folder_ = folder_.parent_path();  // it was given with a slash at its end
  } else if (!fs::is_directory(folder_)) {
    only_ = folder_.filename();
    folder_ = folder_.has_parent_path() ? folder_.parent_path() : ".";
  }
}

std::string TraceFolder::metadata() const {
  const std::string name = metadataName();
  const OpenFile file(name);
  std::string text;
  for (std::size_t got = 1; got != 0;) {
    constexpr std::size_t kPiece = 65536;
    const std::size_t size = text.size();
    text.resize(size + kPiece);
    got = file.read(text.data() + size, kPiece, size);
    text.resize(size + got);
  }
  return text;
}

std::vector<TraceSource::Packet> TraceFolder::packets() const {
  std::vector<std::string> names{only_};
  if (only_.empty()) {
    names.clear();
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
      std::string name = entry.path().filename();
      if (name.starts_with("segment-")) {
        names.push_back(std::move(name));
      }
    }
    std::ranges::sort(names);
  }
  std::vector<Packet> packets;
  for (const std::string& name : names) {
    Packet& packet = packets.emplace_back();
    packet.name = folder_ / name;
    packet.place = packets.size() - 1;
    packet.header = OpenFile(packet.name).header();
  }
  return packets;
}

bool TraceFolder::read(Packet& packet, std::string& records) const {
  const OpenFile file(packet.name);
  const std::uint64_t sequence = packet.header.sequence;
  if (file.header().sequence != sequence) {
    return false;
  }
  // Only now: a size that is read after the sequence is not older than that.
  packet.header = file.header();
  records.resize(packet.header.contentBits / 8 - kHeader);
  if (const std::size_t got = file.read(records.data(), records.size(), kHeader);
      got != records.size()) {
    records.resize(got);
    throw TraceError(concat({packet.name, ": the file was cut off; its last records are missing"}));
  }
  return packet.header.sequence == sequence && file.header().sequence == sequence;
}

std::unique_ptr<TraceSource> TraceFolder::previous() const {
  fs::path aside = folder_;
  aside += ".previous";
  return only_.empty() && fs::is_directory(aside) ? std::make_unique<TraceFolder>(aside) : nullptr;
}

}  // namespace Host
