#include "zelv/interfaces/CommandReturn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>

#include "zelv/adapter/testing/Peer.h"
#include "zelv/core/testing/SmallSet.h"

namespace Zelv {
namespace {

using ::testing::EndsWith;
using ::testing::StartsWith;

class CommandReturnTest : public ::testing::Test {
 protected:
  Testing::SmallSet mSet;
};

TEST_F(CommandReturnTest, SendsTheValueToWhereTheCommandSaid) {
  ASSERT_NE(Testing::SmallSet::start(), nullptr);
  std::uint16_t const port = Testing::Peer::freePort(Testing::Peer::Stream);
  Testing::Peer listener(Testing::Peer::Stream);
  ASSERT_TRUE(listener.listen(port));
  std::string received;
  std::thread phone([&] {
    Testing::Peer connection = listener.accept();
    received = connection.receive();
    connection.send("\n");
  });
  CommandArgs args;
  args.messageId = GUID("6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10");
  args.replyTo = "tcp://127.0.0.1:" + std::to_string(port) + "/";
  CommandReturn::sendReturn("<A>1 &lt; 2</A>", args);
  phone.join();
  EXPECT_THAT(received, StartsWith("<Envelope><Header><MessageID>"));
  EXPECT_THAT(received, EndsWith("<RelatesTo>6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10</RelatesTo>"
                                 "</Header><Body><A>1 &lt; 2</A></Body></Envelope>\n"));
}

TEST_F(CommandReturnTest, EndsASendToADeviceThatKeepsSilentAndSendsNoMore) {
  ASSERT_NE(Testing::SmallSet::start(), nullptr);
  std::uint16_t const port = Testing::Peer::freePort(Testing::Peer::Stream);
  Testing::Peer listener(Testing::Peer::Stream);
  ASSERT_TRUE(listener.listen(port));
  CommandArgs args;
  args.replyTo = "tcp://127.0.0.1:" + std::to_string(port) + "/";
  std::thread sender([&] { CommandReturn::sendReturn("value", args); });
  Testing::Peer connection = listener.accept();
  EXPECT_NE(connection.receive(), "");
  CommandReturn::cancel();
  sender.join();
  EXPECT_TRUE(connection.seesEnd());
  // One that tried would wait here for its acknowledgement in vain, and log it.
  int const errors = static_cast<int>(mSet.log.texts(PCRealDebug::Error).size());
  CommandReturn::sendReturn("value", args);
  EXPECT_EQ(static_cast<int>(mSet.log.texts(PCRealDebug::Error).size()), errors);
}

TEST_F(CommandReturnTest, HasNothingToEndWithoutALibrary) {
  CommandReturn::cancel();
  EXPECT_EQ(Core::requestCore(), nullptr);
}

TEST_F(CommandReturnTest, RefusesToAnswerALocalCommand) {
  ASSERT_NE(Testing::SmallSet::start(), nullptr);
  EXPECT_THROW(CommandReturn::sendReturn("value", CommandArgs()), std::logic_error);
}

TEST_F(CommandReturnTest, NeedsALibraryThatRunsAndStartsNone) {
  CommandArgs args;
  args.replyTo = "tcp://127.0.0.1:1/";
  EXPECT_THROW(CommandReturn::sendReturn("value", args), std::logic_error);
  EXPECT_EQ(Core::requestCore(), nullptr);
}

}  // namespace
}  // namespace Zelv
