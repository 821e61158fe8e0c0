#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Lumo/Lumo.h"
#include "Pario/Listening.h"
#include "Pario/Message.h"

namespace TestSupport {

/// Collects what is written to the binary trace while it lives, in a ring of its own that is the
/// default one meanwhile, and decodes it: what it returns was read from the bytes of the ring.
class RingCapture {
 public:
  explicit RingCapture(std::size_t segmentSize = std::size_t{1} << 20U, std::size_t segments = 4) {
    std::string why;
    ring_ = Lumo::TraceFile::inMemory(segmentSize, segments, why);
    EXPECT_NE(ring_, nullptr) << why;
    before_ = Lumo::defaultHandleIs(ring_.get());
  }
  ~RingCapture() { Lumo::defaultHandleIs(before_); }
  RingCapture(const RingCapture&) = delete;
  RingCapture& operator=(const RingCapture&) = delete;

  Lumo::TraceFile& ring() { return *ring_; }

  /// The records since the last call as "<level> <message>", as TraceCapture::take.
  std::vector<std::string> take() {
    std::vector<std::string> out;
    forEachNew([&](const Lumo::Record& record) {
      out.push_back(std::to_string(record.site->level) + " ");
      Pario::appendMessage(out.back(), record);
    });
    return out;
  }

  /// The whole lines since the last call, as TraceCapture::takeText.
  std::vector<std::string> takeText() {
    std::vector<std::string> out;
    forEachNew(
        [&](const Lumo::Record& record) { Pario::appendTextLine(out.emplace_back(), record); });
    return out;
  }

 private:
  template <class Each>
  void forEachNew(const Each& each) {
    const std::uint64_t taken = taken_;
    EXPECT_TRUE(Lumo::forEachRecord(ring_->memory(), ring_->segmentSize(), Lumo::siteOf,
                                    [&](const Lumo::Record& record) {
                                      if (record.stamp > taken) {
                                        each(record);
                                        taken_ = record.stamp;
                                      }
                                    }));
    EXPECT_EQ(ring_->discarded(), 0U) << "records were lost: the test needs a larger ring";
  }

  std::unique_ptr<Lumo::TraceFile> ring_;
  Lumo::TraceFile* before_ = nullptr;
  std::uint64_t taken_ = 0;  // the stamp of the last record that was taken
};

}  // namespace TestSupport
