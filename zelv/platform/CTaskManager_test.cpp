#include "zelv/platform/CTaskManager.h"

#include <gtest/gtest.h>

namespace {

TEST(CTaskManager, KnowsTheApplicationOfThisLibraryByItsNumber) {
  EXPECT_EQ(67, static_cast<int>(DTV_APPLICATION_ZELV));
  CApplication* const application = g_TaskManager.GetApplication(DTV_APPLICATION_ZELV);
  EXPECT_NE(nullptr, application);
  EXPECT_EQ(application, g_TaskManager.GetApplication(static_cast<DTV_APPLICATION>(67)));
}

TEST(CTaskManager, KnowsNoOther) {
  for (int const number : {-1, 0, 1, 66, 68, 1000000}) {
    EXPECT_EQ(nullptr, g_TaskManager.GetApplication(static_cast<DTV_APPLICATION>(number)));
  }
}

}  // namespace
