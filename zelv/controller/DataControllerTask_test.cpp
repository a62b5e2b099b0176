#include "zelv/controller/DataControllerTask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "zelv/controller/GetDataTask.h"
#include "zelv/controller/SetDataTask.h"
#include "zelv/controller/UnreachableDataHandler.h"
#include "zelv/controller/testing/MockRemoteDataHandler.h"
#include "zelv/controller/testing/RecordingCallback.h"
#include "zelv/platform/fake/FakeLog.h"
#include "zelv/platform/fake/LogMatchers.h"

namespace Zelv::Controller {
namespace {

using Platform::Fake::LogCapture;
using Platform::Fake::Logged;
using ::testing::IsEmpty;
using Testing::MockRemoteDataHandler;
using Testing::RecordingCallback;
using ::testing::StrictMock;

class Context : public ContextInformation {};

class DataControllerTaskTest : public ::testing::TestWithParam<bool> {
 protected:
  StrictMock<MockRemoteDataHandler> handler;
  RecordingCallback callback;
  Context context;
  GUID const id = GUID::createGUID();
};

TEST_P(DataControllerTaskTest, AGetHandsAllItsFieldsToTheHandler) {
  std::unique_ptr<DataControllerTask> const task(
      new GetDataTask(&handler, id, "/Zelv/a", &context, &callback, GetParam()));
  EXPECT_CALL(handler, executeGetData(id, "/Zelv/a", &context, &callback, GetParam()));
  task->execute();
}

TEST_P(DataControllerTaskTest, ASetHandsAllItsFieldsToTheHandler) {
  std::unique_ptr<DataControllerTask> const task(
      new SetDataTask(&handler, id, "/Zelv/a", "value", GetParam(), &callback, !GetParam()));
  EXPECT_CALL(handler, executeSetData(id, "/Zelv/a", "value", GetParam(), &callback, !GetParam()));
  task->execute();
}

TEST_P(DataControllerTaskTest, AnUnreachableDeviceIsLoggedAndNobodyIsTold) {
  LogCapture log;
  UnreachableDataHandler unreachable;
  GetDataTask(&unreachable, id, "/far", &context, &callback, GetParam()).execute();
  SetDataTask(&unreachable, id, "/far", "value", GetParam(), &callback, true).execute();
  EXPECT_THAT(callback.heard(), IsEmpty());
  EXPECT_THAT(
      log, Logged(PCRealDebug::Warning,
                  "UnreachableDataHandler::executeGetData: no way to the device of XPath '/far'."));
  EXPECT_THAT(
      log, Logged(PCRealDebug::Warning,
                  "UnreachableDataHandler::executeSetData: no way to the device of XPath '/far'."));
}

INSTANTIATE_TEST_SUITE_P(FalseAndTrue, DataControllerTaskTest, ::testing::Bool());

}  // namespace
}  // namespace Zelv::Controller
