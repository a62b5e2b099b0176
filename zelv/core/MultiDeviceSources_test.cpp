#include "zelv/core/MultiDeviceSources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Zelv {
namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::InSequence;
using ::testing::IsEmpty;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::Throw;

class Source : public IDataProvider {
 public:
  MOCK_METHOD(int, getData, (std::string const&, std::string&, GUID), (override));
  MOCK_METHOD(int, setData, (std::string const&, std::string const&, GUID), (override));
  MOCK_METHOD(int, addData, (std::string const&, std::string const&, GUID), (override));
  MOCK_METHOD(int, onSubscribe, (std::string const&, GUID), (override));
  MOCK_METHOD(int, onUnsubscribe, (std::string const&, GUID), (override));
};

char const* const cPath = "/Zelv/Devices/RemoteTV/@ID";

class MultiDeviceSourcesTest : public ::testing::Test {
 protected:
  static void answers(Source& aSource, std::string const& aText, int aResult = 0) {
    EXPECT_CALL(aSource, getData(_, _, _))
        .WillOnce(DoAll(SetArgReferee<1>(aText), Return(aResult)));
  }

  std::string read() {
    return MultiDeviceSources::read({&mFirst, &mSecond}, cPath, GUID::nullGUID);
  }

  ::testing::StrictMock<Source> mFirst;
  ::testing::StrictMock<Source> mSecond;
};

TEST_F(MultiDeviceSourcesTest, JoinsTwoAnswersInOrder) {
  answers(mFirst, "a");
  answers(mSecond, "b");
  EXPECT_EQ(read(), "a&#x13;b");
}

TEST_F(MultiDeviceSourcesTest, ADeviceThatBothKnowStandsThereTwice) {
  answers(mFirst, "a&#x13;b");
  answers(mSecond, "b");
  EXPECT_EQ(read(), "a&#x13;b&#x13;b");
}

TEST_F(MultiDeviceSourcesTest, OneAnswerHasNoSeparator) {
  answers(mFirst, "a");
  answers(mSecond, "");
  EXPECT_EQ(read(), "a");
  answers(mFirst, "");
  answers(mSecond, "b");
  EXPECT_EQ(read(), "b");
}

TEST_F(MultiDeviceSourcesTest, NoAnswerIsAnEmptyText) {
  answers(mFirst, "");
  answers(mSecond, "");
  EXPECT_EQ(read(), "");
  EXPECT_EQ(MultiDeviceSources::read({}, cPath, GUID::nullGUID), "");
}

TEST_F(MultiDeviceSourcesTest, LooksAtNoResult) {
  answers(mFirst, "a", -1);
  answers(mSecond, "b", -1);
  EXPECT_EQ(read(), "a&#x13;b");
}

TEST_F(MultiDeviceSourcesTest, PassesPathAndTransactionOnAndAStringOfItsOwn) {
  GUID const transaction = GUID::createGUID();
  InSequence inOrder;
  EXPECT_CALL(mFirst, getData(cPath, IsEmpty(), transaction))
      .WillOnce(DoAll(SetArgReferee<1>("a"), Return(0)));
  EXPECT_CALL(mSecond, getData(cPath, IsEmpty(), transaction)).WillOnce(Return(0));
  EXPECT_EQ(MultiDeviceSources::read({&mFirst, &mSecond}, cPath, transaction), "a");
}

TEST_F(MultiDeviceSourcesTest, PassesOnWhatASourceThrows) {
  EXPECT_CALL(mFirst, getData(_, _, _)).WillOnce(Throw(std::out_of_range("path")));
  EXPECT_THROW(read(), std::out_of_range);
}

}  // namespace
}  // namespace Zelv
