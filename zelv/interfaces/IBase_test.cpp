#include "zelv/interfaces/IBase.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zelv/interfaces/IAppData.h"
#include "zelv/interfaces/IAppTimer.h"
#include "zelv/interfaces/IAppUser.h"
#include "zelv/interfaces/ICoreCommand.h"
#include "zelv/interfaces/ICoreTimer.h"
#include "zelv/interfaces/ICoreUser.h"

namespace Zelv {
namespace {

/// Both families of timers and of users in one object, as the object behind InterfaceFactory is
/// made.
class TwoFamilies : public virtual ICoreTimer,
                    public virtual IAppTimer,
                    public virtual ICoreUser,
                    public virtual IAppUser {
 public:
  explicit TwoFamilies(bool& aDeleted) : mDeleted(aDeleted) {}
  ~TwoFamilies() override { mDeleted = true; }

  GUID createTimer(unsigned int, int, std::string const&, IBaseTimerCallback*) override {
    return GUID::nullGUID;
  }
  void destroyTimer(GUID const&, IBaseTimerCallback*) override {}
  void resetTimer(GUID const&, unsigned int, int) override {}
  GUID subscribeUser(std::string const&, IBaseUserCallback*) override { return GUID::nullGUID; }
  void unsubscribeUser(GUID) override {}

 private:
  bool& mDeleted;
};

class IBaseTest : public ::testing::Test {
 protected:
  bool mDeleted = false;
  std::unique_ptr<TwoFamilies> mObject = std::make_unique<TwoFamilies>(mDeleted);
};

TEST_F(IBaseTest, NameIsEmptyUntilSet) {
  EXPECT_EQ(mObject->getName(), "");
  mObject->setName("living room");
  EXPECT_EQ(mObject->getName(), "living room");
}

TEST_F(IBaseTest, AllFamiliesOfOneObjectShareOneName) {
  static_cast<IAppUser&>(*mObject).setName("one");
  EXPECT_EQ(static_cast<ICoreTimer&>(*mObject).getName(), "one");
  EXPECT_EQ(static_cast<IBase*>(static_cast<IAppUser*>(mObject.get())),
            static_cast<IBase*>(static_cast<ICoreTimer*>(mObject.get())));
  EXPECT_EQ(static_cast<IBaseTimer*>(static_cast<IAppTimer*>(mObject.get())),
            static_cast<IBaseTimer*>(static_cast<ICoreTimer*>(mObject.get())));
}

TEST_F(IBaseTest, EveryInterfaceOfAnObjectIsReachedByDynamicCast) {
  IBase* base = mObject.get();
  EXPECT_EQ(dynamic_cast<IAppTimer*>(base), static_cast<IAppTimer*>(mObject.get()));
  EXPECT_EQ(dynamic_cast<ICoreTimer*>(base), static_cast<ICoreTimer*>(mObject.get()));
  EXPECT_EQ(dynamic_cast<IAppUser*>(base), static_cast<IAppUser*>(mObject.get()));
  EXPECT_EQ(dynamic_cast<IBaseUser*>(base), static_cast<IBaseUser*>(mObject.get()));
}

TEST_F(IBaseTest, AnInterfaceThatTheObjectLacksIsNull) {
  IBase* base = mObject.get();
  EXPECT_EQ(dynamic_cast<IAppData*>(base), nullptr);
  EXPECT_EQ(dynamic_cast<ICoreCommand*>(base), nullptr);
}

TEST_F(IBaseTest, DeletingThroughTheRootDeletesTheObject) {
  IBase* base = mObject.release();
  delete base;
  EXPECT_TRUE(mDeleted);
}

}  // namespace
}  // namespace Zelv
