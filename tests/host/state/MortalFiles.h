#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "state/Files.h"

namespace HostTests {

/// A file system that knows what would be left of it if the machine went down, and on which any
/// operation can be made to fail, or to be the last one.
class MortalFiles : public Host::Files {
 public:
  /// The machine has gone down.
  struct Death {};

  /// At the operation of this number, counted from 1: the machine goes down; half of what a write
  /// was to write has been written.
  std::size_t diesAt = 0;
  /// From the operation of the first number up to that of the second: it fails.
  std::size_t failsFrom = 0;
  std::size_t failsTo = 0;
  std::size_t operations = 0;

  /// Creates `folder` with what is left of `of`. Of what was not synced, `survives(N)` says how
  /// much is left: a number up to N of the last changes of a folder's names, or of the last bytes
  /// that a file has gained. Names change in order, as a journaling file system has it.
  using Survives = std::function<std::size_t(std::size_t)>;
  void materialise(const std::string& of, const std::string& folder, const Survives& survives);

  int open(const std::string& file) override;
  void write(int descriptor, const std::string& file, std::string_view bytes) override;
  void sync(int descriptor, const std::string& file) override;
  void cut(int descriptor, const std::string& file, std::size_t size) override;
  void makeFolder(const std::string& folder) override;
  void syncFolder(const std::string& folder) override;
  void rename(const std::string& from, const std::string& to) override;
  void remove(const std::string& path) override;

 private:
  struct Inode;
  using Names = std::map<std::string, std::shared_ptr<Inode>>;
  struct Inode {
    bool folder = false;
    std::string content;           // of a file
    std::size_t onDisk = 0;        // how much of it
    bool dropped = false;          // the system has given up what could not be written
    std::vector<Names> names{{}};  // of a folder: as they are on disk, then after each change
  };

  void step(const std::string& what);
  std::shared_ptr<Inode> find(const std::string& path);
  /// The names in the folder of `path`, to be changed.
  Names& namesAround(const std::string& path);

  Inode root_;
};

}  // namespace HostTests
