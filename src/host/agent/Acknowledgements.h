#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "agent/Client.h"

namespace Host {

/// The answers of one turn which say that a line was applied. Until what they promise is on disk
/// they have not been sent, and may have to be taken back.
class Acknowledgements {
 public:
  /// The answer is what `client` has been told since its output had `begin` bytes.
  void add(Client& client, std::size_t number, std::size_t begin) {
    all_.push_back({&client, number, begin, client.output().size()});
  }
  /// All is on disk.
  void good() { all_.clear(); }
  /// Nobody knows what is on disk: each becomes an error that says why.
  void takeBack(std::string_view why);

 private:
  struct Answer {
    Client* client;
    std::size_t number;
    std::size_t begin;
    std::size_t end;
  };

  std::vector<Answer> all_;
};

}  // namespace Host
