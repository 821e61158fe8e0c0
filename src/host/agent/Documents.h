#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "agent/Diary.h"
#include "agent/Engine.h"
#include "text/Progress.h"
#include "text/Report.h"

namespace Host {

/// The documents that the agent was given: read at the start, and again when somebody asks for it
/// or has edited one.
///
/// The text of each is kept as it was read last. So it can be said what an edit has changed, and
/// that alone is changed in what runs: what came over the socket stays, unless the edit touches it.
class Documents {
 public:
  Documents(std::vector<std::string> files, Diary& diary)
      : files_(std::move(files)), diary_(diary) {}

  /// Reads the documents into fresh trees. False: something is wrong, and has been reported.
  bool read(const Trees& trees, Report& report, Progress& progress);

  /// What reading them again has come to.
  struct Outcome {
    std::size_t differing = 0;  ///< how many documents differ
    std::string error;          ///< what is wrong; empty: nothing
  };
  /// Reads the documents again and applies what differs, as one burst. Where anything is wrong,
  /// nothing is applied, and the next time they are compared with what they were before. Tells the
  /// diary all of it.
  Outcome readAgain(Engine& engine);

  /// Applies what differs between two readings of the documents, and tells the diary. What is
  /// wrong; empty: nothing.
  std::string apply(const Trees& before, const Trees& after, Engine& engine);
  /// Is told what the documents say whenever that was applied. May raise std::exception: then it
  /// counts as not applied.
  using Keeper = std::function<void(const Trees& documents)>;
  void keeperIs(Keeper keeper) { keeper_ = std::move(keeper); }

  /// Whether one of them says something else by now.
  bool haveChanged() const;

  const std::vector<std::string>& files() const { return files_; }

 private:
  using Texts = std::vector<std::unique_ptr<SourceText>>;

  bool read(Texts& texts, const Trees& trees, Report& report, Progress& progress) const;
  std::size_t differing(const Texts& texts) const;
  void sayThatNothingDiffers();

  const std::vector<std::string> files_;
  Diary& diary_;
  Texts texts_;
  Keeper keeper_;
};

}  // namespace Host
