#pragma once

#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "zelv/infrastructure/HierarchicalDB.h"

namespace Zelv::Infrastructure::Testing {

inline constexpr auto cNothing = std::nullopt;

inline std::string repeat(std::string const& aText, std::size_t aTimes) {
  std::string result;
  for (std::size_t turn = 0; turn < aTimes; ++turn) {
    result += aText;
  }
  return result;
}

/// One database, and short words for what is done with it.
class HierarchicalDBTest : public testing::Test {
 protected:
  void load(std::string const& aXml) { ASSERT_EQ(mDatabase.loadFromString(aXml), 0); }

  /// What getContent() gives, or nothing if it fails; it leaves an empty result then.
  std::optional<std::string> read(std::string const& aPath) {
    std::string result = "from before";
    if (mDatabase.getContent(aPath, result) == 0) {
      return result;
    }
    EXPECT_EQ(result, "") << aPath;
    return std::nullopt;
  }

  int write(std::string const& aPath, std::string const& aValue, bool aCreate = false) {
    return mDatabase.setContent(aPath, aValue, aCreate);
  }

  std::string all() {
    std::string text;
    EXPECT_EQ(mDatabase.serialize(text, -1), 0);
    return text;
  }

  HierarchicalDB mDatabase;
};

}  // namespace Zelv::Infrastructure::Testing
