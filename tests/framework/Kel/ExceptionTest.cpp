#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <type_traits>

#include "Kel/Exception.h"

namespace Kel {
namespace {

TEST(Exception, CarriesItsMessageUnchanged) {
  const std::string message = "X::value < X::min or > X::max not allowed";
  try {
    throwRangeException(message);
  } catch (const RangeException& error) {
    EXPECT_EQ(error.what(), message);
  }
}

TEST(Exception, IsCaughtAsItsOwnTypeAsTheFrameworksAndAsTheLanguages) {
  EXPECT_THROW(throwRangeException("x"), RangeException);
  EXPECT_THROW(throwRangeException("x"), Exception);
  EXPECT_THROW(throwRangeException("x"), std::exception);
  EXPECT_THROW(Impl::throwMutatorReinstantiating("c", "k"), ReinstantiationException);
  EXPECT_THROW(Impl::throwMutatorReinstantiating("c", "k"), Exception);
  static_assert(!std::is_base_of_v<RangeException, ReinstantiationException>);
}

TEST(Exception, OfReinstantiationNamesTheCollectionTheKeyAndTheWayOut) {
  try {
    Impl::throwMutatorReinstantiating("Machine::child", "20000");
  } catch (const ReinstantiationException& error) {
    EXPECT_STREQ(error.what(),
                 "Machine::child[20000] exists and was built from other objects than those given; "
                 "remove it before creating it anew");
  }
}

TEST(Exception, IsCopiedWithoutRaisingAndKeepsItsMessage) {
  static_assert(std::is_nothrow_copy_constructible_v<RangeException>);
  static_assert(std::is_nothrow_copy_assignable_v<RangeException>);
  const char* text = nullptr;
  {
    RangeException copy("other");
    {
      const RangeException original(std::string(1000, 'm'));
      copy = original;
    }
    text = copy.what();
    EXPECT_EQ(std::string(text), std::string(1000, 'm'));
  }
}

TEST(Exception, SurvivesBeingKeptAndRaisedAgain) {
  std::exception_ptr kept;
  try {
    throwRangeException("kept");
  } catch (...) {
    kept = std::current_exception();
  }
  try {
    std::rethrow_exception(kept);
  } catch (const RangeException& error) {
    EXPECT_STREQ(error.what(), "kept");
  }
}

}  // namespace
}  // namespace Kel
