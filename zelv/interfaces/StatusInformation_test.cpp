#include "zelv/interfaces/StatusInformation.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace Zelv {
namespace {

TEST(StatusInformation, KeepsTheTextThatItIsMadeFrom) {
  StatusInformation const status(std::string("device went away"));
  EXPECT_EQ(status.getStatusText(), "device went away");
}

TEST(StatusInformation, LosesTheMessageOfTheExceptionThatItIsMadeFrom) {
  std::runtime_error const thrown("Data Provider Not Found");
  StatusInformation const status(thrown);
  EXPECT_EQ(status.getStatusText(), "");
  EXPECT_STREQ(status.getException().what(), std::exception().what());
  EXPECT_EQ(dynamic_cast<std::runtime_error const*>(&status.getException()), nullptr);
}

TEST(StatusInformation, MadeFromATextHoldsAPlainException) {
  StatusInformation const status(std::string("text"));
  EXPECT_STREQ(status.getException().what(), std::exception().what());
}

TEST(StatusInformation, IsNoExceptionAndIsNeverMadeByAccident) {
  static_assert(!std::is_base_of_v<std::exception, StatusInformation>);
  static_assert(!std::is_convertible_v<std::string, StatusInformation>);
  static_assert(!std::is_convertible_v<std::exception, StatusInformation>);
  static_assert(!std::is_default_constructible_v<StatusInformation>);
  EXPECT_TRUE(std::has_virtual_destructor_v<StatusInformation>);
}

TEST(StatusInformation, HoldsTheExceptionBeforeTheText) {
  StatusInformation const status(std::string("x"));
  EXPECT_LT(static_cast<void const*>(&status.getException()),
            static_cast<void const*>(&status.getStatusText()));
}

TEST(StatusInformation, CopyOutlivesTheOriginal) {
  StatusInformation kept(std::string("old"));
  {
    StatusInformation const original(std::string("a text too long for any small buffer"));
    kept = original;
  }
  EXPECT_EQ(kept.getStatusText(), "a text too long for any small buffer");
}

}  // namespace
}  // namespace Zelv
