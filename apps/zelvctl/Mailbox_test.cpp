#include "apps/zelvctl/Mailbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <deque>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "apps/zelvctl/testing/Client.h"

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MailboxTest : public testing::Test {
 protected:
  /// Deals with so many events: somebody who comes, a piece that arrives, an end. Each is waited
  /// for, 20 seconds at most.
  void serve(int aEvents) {
    for (int count = 0; count < aEvents; ++count) {
      pollfd descriptor{mMailbox.descriptor(), POLLIN, 0};
      ASSERT_EQ(::poll(&descriptor, 1, 20000), 1);
      mMailbox.serve();
    }
  }

  std::vector<std::string> mMessages;
  Mailbox mMailbox{0, [this](std::string const& aMessage) {
                     mMessages.push_back(aMessage);
                     if (aMessage == "throw\n") {
                       throw std::runtime_error("hostile");
                     }
                   }};
};

TEST_F(MailboxTest, ConfirmsAMessageWithALineFeedAndCloses) {
  Client client(mMailbox.port());
  client.send("text\n");
  serve(2);
  EXPECT_THAT(mMessages, ElementsAre("text\n"));
  EXPECT_EQ(client.receive(), "\n");
  EXPECT_EQ(client.receive(), "closed");
}

TEST_F(MailboxTest, JoinsThePiecesOfAMessage) {
  Client client(mMailbox.port());
  client.send("one");
  serve(2);
  EXPECT_EQ(client.received(), "");
  client.send(" two\nthree\n");
  serve(1);
  EXPECT_THAT(mMessages, ElementsAre("one two\nthree\n"));
}

TEST_F(MailboxTest, HearsOneSenderInHisOrder) {
  std::vector<std::string> expected;
  for (int number = 0; number < 200; ++number) {
    Client client(mMailbox.port());
    expected.push_back(std::to_string(number) + "\n");
    client.send(expected.back());
    serve(2);
    EXPECT_EQ(client.receive(), "\n");
  }
  EXPECT_EQ(mMessages, expected);
}

TEST_F(MailboxTest, TakesNothingFromWhoClosesWithoutALineFeed) {
  Client client(mMailbox.port());
  client.send("text");
  client.close();
  serve(3);
  EXPECT_THAT(mMessages, IsEmpty());
}

TEST_F(MailboxTest, DropsWhatStandsBehindANulInTheSamePiece) {
  Client client(mMailbox.port());
  client.send(std::string("te\0xt\n", 6));
  serve(2);
  EXPECT_THAT(mMessages, ElementsAre("te"));
}

TEST_F(MailboxTest, GoesOnBehindAMessageThatCouldNotBeDealtWith) {
  Client first(mMailbox.port());
  first.send("throw\n");
  serve(2);
  Client second(mMailbox.port());
  second.send("text\n");
  serve(2);
  EXPECT_THAT(mMessages, ElementsAre("throw\n", "text\n"));
}

TEST_F(MailboxTest, LetsTheConnectionThatIsSilentForLongestGiveWay) {
  std::deque<Client> clients;
  for (std::size_t number = 0; number < Mailbox::MaxConnections; ++number) {
    clients.emplace_back(mMailbox.port());
    serve(1);
  }
  clients[0].send("I speak");
  serve(1);
  EXPECT_EQ(clients[1].received(), "");
  Client late(mMailbox.port());
  late.send("text\n");
  serve(2);
  EXPECT_EQ(clients[0].received(), "");
  EXPECT_EQ(clients[1].receive(), "closed");
  EXPECT_EQ(late.receive(), "\n");
}

TEST_F(MailboxTest, ClosesOnAMessageThatIsTooLong) {
  Client client(mMailbox.port());
  std::string const piece(1U << 16, 'x');
  std::size_t sent = 0;
  std::string answer;
  while (answer.empty() && sent < 2 * Zelv::Adapter::IncomingText::MaxSize) {
    sent += client.send(piece) ? piece.size() : 1;
    mMailbox.serve();
    answer = client.received();
  }
  EXPECT_EQ(answer, "closed");
  EXPECT_THAT(mMessages, IsEmpty());
}

TEST_F(MailboxTest, CannotStandWhereAnotherDoes) {
  EXPECT_THROW(Mailbox(mMailbox.port(), [](std::string const&) {}), std::system_error);
}

}  // namespace
}  // namespace ZelvCtl
