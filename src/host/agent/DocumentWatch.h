#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "agent/Loop.h"

namespace Host {

/// Finds out when somebody has saved one of these files.
///
/// Editors put a new file in the place of the old one, and a watch on the file would stay with the
/// old one. So the folders are watched, and what happens there to other names is ignored. Of a
/// symbolic link, the folder of what it leads to is watched too. A save is often more than one
/// event; it counts when nothing has happened for 50 ms.
class DocumentWatch : public Loop::Source {
 public:
  /// Raises std::runtime_error when a folder cannot be watched.
  DocumentWatch(const std::vector<std::string>& files, Loop& loop);
  ~DocumentWatch() override;

  void ready(std::uint32_t events) override;
  /// Whether something was saved since this was asked, and all has been quiet since.
  bool takeSaved() { return std::exchange(saved_, false); }

 private:
  /// Ends a burst of events.
  class Quiet : public Loop::Source {
   public:
    explicit Quiet(DocumentWatch& watch);
    void begin() const;
    void ready(std::uint32_t events) override;
    int descriptor() const { return timer_.number(); }

   private:
    DocumentWatch& watch_;
    Descriptor timer_;
  };

  void watch(const std::string& file);

  Loop& loop_;
  Descriptor events_;
  Quiet quiet_;
  std::set<std::pair<int, std::string>> names_;  // by the watch on their folder
  bool saved_ = false;
};

}  // namespace Host
