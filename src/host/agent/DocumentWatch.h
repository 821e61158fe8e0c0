#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/Loop.h"

namespace Host {

/// Finds out when somebody has saved one of these files.
///
/// Editors put a new file in the place of the old one, and a watch on the file would stay with the
/// old one. So the folders are watched, and what happens there to other names is ignored. Symbolic
/// links are followed: each link on the way to a file, and the file that it leads to, count as the
/// file, and the way is looked up anew after each save (a configuration is often put in place by
/// turning one link over to another folder). A save is often more than one event; it counts when
/// nothing has happened for 50 ms.
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

  /// Why it cannot; then all is watched as before.
  std::optional<std::string> follow();

  const std::vector<std::string> files_;
  Loop& loop_;
  Descriptor events_;
  Quiet quiet_;
  std::map<std::pair<int, std::string>, bool> names_;  // by folder and name: is it a link?
  bool saved_ = false;
};

}  // namespace Host
