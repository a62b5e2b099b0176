#include "zelv/controller/RemoteDataContexts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zelv/controller/GetDataContext.h"

namespace Zelv::Controller {
namespace {

using Infrastructure::URL;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Added = RemoteDataContexts::Added;

class RemoteDataContextsTest : public ::testing::Test {
 protected:
  static RemoteDataContexts::Subscription asked(bool aOneTime, std::string const& aDevice = "phone",
                                                GUID const& aRemoteId = GUID::createGUID()) {
    return std::make_shared<RemoteDataSubscriptionContext>(aRemoteId, URL("tcp://127.0.0.1:1/"),
                                                           aDevice, aOneTime, "/Zelv/A");
  }

  /// A subscription that has its local id.
  RemoteDataContexts::Subscription running(std::string const& aDevice, GUID const& aRemoteId) {
    auto const context = asked(false, aDevice, aRemoteId);
    EXPECT_NE(contexts.add(context, gone), Added::Refused);
    EXPECT_TRUE(contexts.started(*context, GUID::createGUID()));
    return context;
  }

  void fill(std::string const& aDevice) {
    while (contexts.countSubscriptions() < RemoteDataContexts::cSubscriptions) {
      running(aDevice, GUID::createGUID());
    }
  }

  GUID const id = GUID::createGUID();
  RemoteDataContexts contexts;
  RemoteDataContexts::Subscription gone;
};

TEST_F(RemoteDataContextsTest, FollowNoPointerThatIsNotInTheTable) {
  auto const* stale = reinterpret_cast<ContextInformation const*>(0x10);
  EXPECT_EQ(contexts.answered(stale, "/Zelv/A", id), nullptr);
  EXPECT_EQ(contexts.answered(nullptr, "/Zelv/A", id), nullptr);
}

TEST_F(RemoteDataContextsTest, GiveAOneTimeContextOnce) {
  auto const context = asked(true);
  contexts.add(context, gone);
  EXPECT_TRUE(contexts.started(*context, id));
  EXPECT_EQ(contexts.answered(context.get(), "/Zelv/A", id), context);
  EXPECT_EQ(contexts.answered(context.get(), "/Zelv/A", id), nullptr);
  EXPECT_EQ(contexts.size(), 0U);
  EXPECT_THAT(contexts.remove(context->remoteId), IsEmpty());
}

TEST_F(RemoteDataContextsTest, GiveASubscriptionWithEachOfItsAnswers) {
  auto const context = running("phone", GUID::createGUID());
  GUID const own = contexts.localIdOf(*context);
  EXPECT_EQ(contexts.answered(context.get(), "/Zelv/A", own), context);
  EXPECT_EQ(contexts.answered(context.get(), "/Zelv/A", own), context);
}

TEST_F(RemoteDataContextsTest, TakeAnAnswerOfAnotherTransactionForStale) {
  auto const context = running("phone", GUID::createGUID());
  EXPECT_EQ(contexts.answered(context.get(), "/Zelv/A", id), nullptr);
}

TEST_F(RemoteDataContextsTest, GoByThePathWhileTheRequestHasNotReturned) {
  auto const context = asked(true);
  contexts.add(context, gone);
  EXPECT_EQ(contexts.answered(context.get(), "/Zelv/B", id), nullptr);
  EXPECT_EQ(contexts.answered(context.get(), "/Zelv/A", id), context);
  // Answered is not removed: there is nothing to take back.
  EXPECT_TRUE(contexts.started(*context, id));
  EXPECT_EQ(contexts.size(), 0U);
}

TEST_F(RemoteDataContextsTest, TellWhoAskedThatItWasRemovedMeanwhile) {
  auto const context = asked(false);
  contexts.add(context, gone);
  EXPECT_THAT(contexts.remove(context->remoteId), SizeIs(1));
  EXPECT_EQ(contexts.localIdOf(*context), GUID::nullGUID);
  EXPECT_FALSE(contexts.started(*context, id));
  EXPECT_EQ(contexts.localIdOf(*context), id);
}

TEST_F(RemoteDataContextsTest, ForgetAFailedOneTimeContextOnly) {
  auto const once = asked(true);
  contexts.add(once, gone);
  contexts.started(*once, id);
  auto const lasting = running("phone", GUID::createGUID());
  contexts.failed(contexts.localIdOf(*lasting));
  contexts.failed(id);
  contexts.failed(id);
  EXPECT_EQ(contexts.size(), 1U);
  EXPECT_THAT(contexts.remove(once->remoteId), IsEmpty());
  EXPECT_THAT(contexts.remove(lasting->remoteId), SizeIs(1));
}

TEST_F(RemoteDataContextsTest, ForgetOneThatFailedBeforeItsRequestReturned) {
  auto const context = asked(true);
  contexts.add(context, gone);
  contexts.failed(id);
  EXPECT_EQ(contexts.size(), 1U);
  contexts.started(*context, id);
  EXPECT_EQ(contexts.size(), 0U);
}

TEST_F(RemoteDataContextsTest, KeepAFailureInMindOnlyWhileARequestIsBeingMade) {
  contexts.failed(id);
  auto const context = asked(true);
  contexts.add(context, gone);
  contexts.started(*context, id);
  EXPECT_EQ(contexts.size(), 1U);
}

TEST_F(RemoteDataContextsTest, KeepABoundedNumberOfFailuresInMind) {
  auto const context = asked(true);
  contexts.add(context, gone);
  contexts.failed(id);
  for (int index = 0; index < 1024; ++index) {
    contexts.failed(GUID::createGUID());
  }
  contexts.started(*context, id);
  EXPECT_EQ(contexts.size(), 1U);
}

TEST_F(RemoteDataContextsTest, ForgetOneWhoseRequestCouldNotBeMade) {
  auto const context =
      std::make_shared<GetDataContext>(id, "/Zelv[@DeviceId='x']/A", true, "x", "/Zelv/lookup");
  contexts.add(context);
  EXPECT_EQ(contexts.size(), 1U);
  contexts.cancel(*context);
  EXPECT_EQ(contexts.size(), 0U);
}

TEST_F(RemoteDataContextsTest, KeepAllThatAreAskedForUnderOneId) {
  auto const first = running("phone", id);
  auto const second = running("phone", id);
  running("phone", GUID::createGUID());
  EXPECT_THAT(contexts.remove(id), ::testing::UnorderedElementsAre(first, second));
  EXPECT_EQ(contexts.size(), 1U);
}

TEST_F(RemoteDataContextsTest, RemoveThoseOfADevice) {
  auto const first = running("one", GUID::createGUID());
  auto const second = running("two", GUID::createGUID());
  contexts.add(std::make_shared<GetDataContext>(id, "/x", true, "one", "/Zelv/lookup"));
  auto const ofOne = [](RemoteDataSubscriptionContext const& aContext) {
    return aContext.deviceId == "one";
  };
  EXPECT_THAT(contexts.removeIf(ofOne), ::testing::ElementsAre(first));
  EXPECT_THAT(contexts.removeIf(ofOne), IsEmpty());
  // The request of this device stays.
  EXPECT_EQ(contexts.size(), 2U);
}

TEST_F(RemoteDataContextsTest, RefuseASubscriptionBeyondTheBound) {
  fill("stranger");
  EXPECT_EQ(contexts.add(asked(false), gone), Added::Refused);
  EXPECT_EQ(gone, nullptr);
  EXPECT_EQ(contexts.size(), RemoteDataContexts::cSubscriptions);
}

TEST_F(RemoteDataContextsTest, CountNoOneTimeRequests) {
  fill("stranger");
  EXPECT_EQ(contexts.add(asked(true), gone), Added::Yes);
  EXPECT_EQ(contexts.countSubscriptions(), RemoteDataContexts::cSubscriptions);
}

TEST_F(RemoteDataContextsTest, TakeASubscriptionAgainOnceOneIsGone) {
  auto const first = running("stranger", id);
  fill("stranger");
  contexts.remove(id);
  EXPECT_EQ(contexts.add(asked(false), gone), Added::Yes);
}

TEST_F(RemoteDataContextsTest, MakeRoomForADeviceThatIsThereAtTheCostOfTheOldestThatIsNot) {
  contexts.setOnline({"phone"});
  running("phone", GUID::createGUID());
  auto const oldest = running("stranger", GUID::createGUID());
  fill("stranger");
  EXPECT_EQ(contexts.add(asked(false, "phone"), gone), Added::GaveWay);
  EXPECT_EQ(gone, oldest);
  EXPECT_EQ(contexts.countSubscriptions(), RemoteDataContexts::cSubscriptions);
  EXPECT_EQ(contexts.add(asked(false, "stranger"), gone), Added::Refused);
}

TEST_F(RemoteDataContextsTest, MakeNoRoomAtTheCostOfDevicesThatAreThere) {
  contexts.setOnline({"phone"});
  fill("phone");
  EXPECT_EQ(contexts.add(asked(false, "phone"), gone), Added::Refused);
}

}  // namespace
}  // namespace Zelv::Controller
