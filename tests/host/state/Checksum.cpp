#include "state/Checksum.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

// RFC 3720, appendix B.4, and the check value that catalogues of checksums give.
TEST(Checksum, IsCrc32c) {
  EXPECT_EQ(checksum("123456789"), 0xe3069283U);
  EXPECT_EQ(checksum(std::string(32, '\0')), 0x8a9136aaU);
  EXPECT_EQ(checksum(std::string(32, '\xff')), 0x62a8ab43U);
  EXPECT_EQ(checksum(""), 0U);
}

TEST(Checksum, OfPiecesIsThatOfTheWhole) {
  EXPECT_EQ(checksum("56789", checksum("1234")), 0xe3069283U);
}

TEST(Checksum, IsPrintedWithEightDigits) { EXPECT_EQ(checksumText(0xab), "000000ab"); }

}  // namespace
}  // namespace Host
