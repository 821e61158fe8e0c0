#include "host/state/MortalFiles.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace HostTests {
namespace {

std::string nameOf(const std::string& path) {
  return std::filesystem::path(path).filename().string();
}
std::string folderOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

}  // namespace

void MortalFiles::step(const std::string& what) {
  ++operations;
  if (operations == diesAt) {
    throw Death{};
  }
  if (operations >= failsFrom && operations <= failsTo) {
    throw Host::OutputError(what + ": No space left on device");
  }
}

/// What the outermost folder is called in the tests: they have one.
std::shared_ptr<MortalFiles::Inode> MortalFiles::find(const std::string& path) {
  const Names& outer = root_.names.back();
  const auto whole = outer.find(path);
  if (whole != outer.end()) {
    return whole->second;
  }
  const auto around = find(folderOf(path));
  const auto at = around->names.back().find(nameOf(path));
  return at == around->names.back().end() ? nullptr : at->second;
}

MortalFiles::Names& MortalFiles::namesAround(const std::string& path) {
  std::vector<Names>& names = find(folderOf(path))->names;
  names.push_back(names.back());
  return names.back();
}

int MortalFiles::open(const std::string& file) {
  step("open");
  const int descriptor = Files::open(file);
  if (find(file) == nullptr) {
    namesAround(file)[nameOf(file)] = std::make_shared<Inode>();
  }
  return descriptor;
}

void MortalFiles::write(int descriptor, const std::string& file, std::string_view bytes) {
  const auto written = [&](std::string_view piece) {
    Files::write(descriptor, file, piece);
    find(file)->content += piece;
  };
  try {
    step("write");
  } catch (...) {
    written(bytes.substr(0, bytes.size() / 2));
    throw;
  }
  written(bytes);
}

// The model says what is on disk; nobody has to wait for the real one.
void MortalFiles::sync(int /*descriptor*/, const std::string& file) {
  const auto inode = find(file);
  try {
    step("sync");
  } catch (...) {
    inode->dropped = true;
    throw;
  }
  inode->onDisk = inode->dropped ? inode->onDisk : inode->content.size();
}

void MortalFiles::cut(int descriptor, const std::string& file, std::size_t size) {
  step("cut");
  Files::cut(descriptor, file, size);
  const auto inode = find(file);
  inode->content.resize(size);
  inode->onDisk = std::min(inode->onDisk, size);
}

void MortalFiles::makeFolder(const std::string& folder) {
  step("mkdir");
  Files::makeFolder(folder);
  auto inode = std::make_shared<Inode>();
  inode->folder = true;
  if (root_.names.back().empty()) {
    root_.names.back()[folder] = inode;
  } else if (find(folder) == nullptr) {
    namesAround(folder)[nameOf(folder)] = inode;
  }
}

void MortalFiles::syncFolder(const std::string& folder) {
  step("sync of a folder");
  std::vector<Names>& names = find(folder)->names;
  names.erase(names.begin(), names.end() - 1);
}

void MortalFiles::rename(const std::string& from, const std::string& to) {
  step("rename");
  Files::rename(from, to);
  Names& names = namesAround(from);
  names[nameOf(to)] = names[nameOf(from)];
  names.erase(nameOf(from));
}

void MortalFiles::remove(const std::string& path) {
  step("remove");
  Files::remove(path);
  if (find(path) != nullptr) {
    namesAround(path).erase(nameOf(path));
  }
}

void MortalFiles::materialise(const std::string& of, const std::string& folder,
                              const Survives& survives) {
  std::filesystem::create_directory(folder);
  std::function<void(const Inode&, const std::string&)> make = [&](const Inode& inode,
                                                                   const std::string& path) {
    const std::size_t changes = survives(inode.names.size() - 1);
    for (const auto& [name, each] : inode.names[changes]) {
      const std::string file = path + "/" + name;
      if (each->folder) {
        std::filesystem::create_directory(file);
        make(*each, file);
      } else {
        const std::size_t more = survives(each->content.size() - each->onDisk);
        std::ofstream(file, std::ios::binary) << each->content.substr(0, each->onDisk + more);
      }
    }
  };
  make(*find(of), folder);
}

}  // namespace HostTests
