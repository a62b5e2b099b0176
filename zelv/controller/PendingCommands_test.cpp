#include "zelv/controller/PendingCommands.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using Zelv::ContextInformation;
using Zelv::GUID;
using Zelv::Controller::PendingCommandContext;
using Zelv::Controller::PendingCommands;

class Callback : public virtual Zelv::IBaseCommandCallback {
 public:
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}
  void onReturn(std::string const&, GUID const&) override {}
};

class Pending : public testing::Test {
 protected:
  ContextInformation const* add(GUID const& aId = GUID::createGUID(),
                                std::string const& aDeviceId = "phone") {
    return mCommands.add(std::make_unique<PendingCommandContext>(aId, "<A></A>", aDeviceId, &mOne));
  }

  std::vector<GUID> release(std::string const& aDeviceId) {
    std::vector<GUID> ids;
    for (PendingCommandContext const& command : mCommands.release(aDeviceId)) {
      ids.push_back(command.mCommandId);
    }
    return ids;
  }

  Callback mOne;
  Callback mOther;
  PendingCommands mCommands;
};

TEST_F(Pending, AreTakenOnce) {
  GUID const id = GUID::createGUID();
  ContextInformation const* const context = add(id);
  mCommands.asked(context, GUID::createGUID());
  auto const command = mCommands.take(context);
  ASSERT_NE(nullptr, command);
  EXPECT_EQ(id, command->mCommandId);
  EXPECT_EQ("<A></A>", command->mCommand);
  EXPECT_EQ("phone", command->mDeviceId);
  EXPECT_EQ(&mOne, command->mCallback);
  EXPECT_EQ(nullptr, mCommands.take(context));
  EXPECT_EQ(0U, mCommands.size());
}

TEST_F(Pending, DoNotFollowAPointerThatIsNoneOfTheirs) {
  PendingCommandContext const strange(GUID::createGUID(), "", "", nullptr);
  EXPECT_EQ(nullptr, mCommands.take(nullptr));
  EXPECT_EQ(nullptr, mCommands.take(&strange));
}

TEST_F(Pending, MayBeAnsweredBeforeTheirRequestReturns) {
  ContextInformation const* const context = add();
  EXPECT_NE(nullptr, mCommands.take(context));
  mCommands.asked(context, GUID::createGUID());
  EXPECT_EQ(0U, mCommands.size());
}

TEST_F(Pending, GoWithTheFailureOfTheirRequest) {
  ContextInformation const* const context = add();
  ContextInformation const* const other = add();
  GUID const request = GUID::createGUID();
  mCommands.asked(context, request);
  mCommands.asked(other, GUID::createGUID());
  mCommands.failed(request);
  mCommands.failed(request);  // some failures are told twice
  EXPECT_EQ(nullptr, mCommands.take(context));
  EXPECT_NE(nullptr, mCommands.take(other));
}

TEST_F(Pending, GoWithAFailureThatComesBeforeTheirRequestReturns) {
  ContextInformation const* const context = add();
  ContextInformation const* const other = add();
  GUID const request = GUID::createGUID();
  mCommands.failed(request);
  mCommands.failed(GUID::createGUID());
  mCommands.asked(context, request);
  EXPECT_EQ(1U, mCommands.size());
  mCommands.asked(other, GUID::createGUID());
  EXPECT_EQ(1U, mCommands.size());
}

TEST_F(Pending, AreNotTakenForAFailureOfLongAgo) {
  GUID const request = GUID::createGUID();
  mCommands.failed(request);
  mCommands.asked(add(), request);
  EXPECT_EQ(1U, mCommands.size());
}

TEST_F(Pending, StayWhenTheirCallbackIsTakenBack) {
  GUID const id = GUID::createGUID();
  ContextInformation const* const context = add(id);
  std::vector<GUID> forgotten;
  auto const note = [&](GUID const& aId) { forgotten.push_back(aId); };
  mCommands.forget(&mOther, note);
  EXPECT_THAT(forgotten, ElementsAre());
  mCommands.forget(&mOne, note);
  mCommands.forget(&mOne, note);
  EXPECT_THAT(forgotten, ElementsAre(id));
  EXPECT_EQ(nullptr, mCommands.take(context)->mCallback);
}

TEST_F(Pending, OfADeviceAreReleasedInTheOrderOfComingAndOnce) {
  std::vector<GUID> ids;
  for (int i = 0; i < 20; ++i) {
    ids.push_back(GUID::createGUID());
    add(ids.back());
    add(GUID::createGUID(), "other");
  }
  EXPECT_THAT(release("phone"), testing::ElementsAreArray(ids));
  EXPECT_THAT(release("phone"), ElementsAre());
  EXPECT_EQ(20U, release("other").size());
}

TEST_F(Pending, ThatWereReleasedWaitForTheirAnswerOrFailureAlone) {
  ContextInformation const* const answered = add();
  ContextInformation const* const failed = add();
  ContextInformation const* const held = add(GUID::createGUID(), "other");
  GUID const request = GUID::createGUID();
  mCommands.asked(failed, request);
  release("phone");
  std::vector<GUID> forgotten;
  mCommands.forget(&mOne, [&](GUID const& aId) { forgotten.push_back(aId); });
  EXPECT_EQ(1U, forgotten.size());
  EXPECT_FALSE(mCommands.dropReleased(held));
  EXPECT_TRUE(mCommands.dropReleased(answered));
  EXPECT_FALSE(mCommands.dropReleased(answered));
  EXPECT_EQ(2U, mCommands.size());
  mCommands.failed(request);
  EXPECT_EQ(1U, mCommands.size());
  EXPECT_NE(nullptr, mCommands.take(held));
}

}  // namespace
