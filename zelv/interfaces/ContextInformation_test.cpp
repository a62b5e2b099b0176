#include "zelv/interfaces/ContextInformation.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

namespace Zelv {
namespace {

class ScreenContext : public ContextInformation {
 public:
  explicit ScreenContext(int& aLive) : mLive(aLive) { ++mLive; }
  ~ScreenContext() override { --mLive; }

 private:
  int& mLive;
};

TEST(ContextInformation, IsMadeOnlyByThoseWhoDerive) {
  static_assert(!std::is_default_constructible_v<ContextInformation>);
  static_assert(!std::is_copy_constructible_v<ContextInformation>);
  int live = 0;
  ScreenContext const own(live);
  ContextInformation const* context = &own;
  EXPECT_EQ(dynamic_cast<ScreenContext const*>(context), &own);
}

TEST(ContextInformation, IsDeletedThroughItsOwnType) {
  int live = 0;
  std::unique_ptr<ContextInformation const> context = std::make_unique<ScreenContext>(live);
  EXPECT_EQ(live, 1);
  context.reset();
  EXPECT_EQ(live, 0);
}

}  // namespace
}  // namespace Zelv
