#include "apps/zelvctl/ServeVerb.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>

#include "apps/zelvctl/Identifier.h"
#include "apps/zelvctl/testing/VerbTest.h"

namespace ZelvCtl {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;

char const* const kCommandId = "1e6d0c52-33f7-4a55-8a0e-b7d3c1e2f4a6";

/// A peer that sends commands to the phone and takes its answers; the phone serves on a thread of
/// its own.
class ServeVerbTest : public VerbTest {
 protected:
  void start(std::optional<std::string> const& aAnswer = std::nullopt, bool aJson = false) {
    mHome = std::make_unique<LoopbackHome>();
    mOptions.address = "127.0.0.1";
    mOptions.group = mHome->group();
    mOptions.port = mHome->port();
    mOptions.id = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";
    mOptions.answer = aAnswer;
    mOptions.json = aJson;
    mPhone = std::thread([this] { mFailure = run<ServeVerb>(mOptions); });
    mHome->receiveMessage();  // the Probe
    std::string const hello = mHome->receiveMessage();
    mUrl = FakeSet::part(hello, "URL");
  }

  /// Ends the phone. @return what it has printed behind its first line.
  std::string stop() {
    mStop.ring();
    mPhone.join();
    EXPECT_EQ(mFailure, "");
    std::string const text = mOut.str();
    EXPECT_THAT(text, HasSubstr(mUrl));
    return text.substr(text.find('\n') + 1);
  }

  bool send(std::string const& aText) {
    Zelv::Adapter::SendCancel cancel;
    return Delivery::send(Zelv::Infrastructure::URL(mUrl), aText, cancel);
  }

  std::string command(std::string const& aId, std::string const& aText) const {
    return CommandMessages("tv").command(
        aId, "tcp://127.0.0.1:" + std::to_string(mMailbox.port()) + "/", aText);
  }

  /// Waits for an answer, and gives its body.
  std::string answer() {
    std::size_t const known = mAnswers.size();
    EXPECT_EQ(mLoop.run(Loop::Clock::now() + std::chrono::seconds(20),
                        [&] { return mAnswers.size() > known; }),
              Loop::Done);
    return mAnswers.size() > known ? ReceivedMessage(mAnswers.back()).body() : "";
  }

  ServeVerbTest() {
    mLoop.serve(mMailbox.descriptor(), [this] { mMailbox.serve(); });
  }

  std::unique_ptr<LoopbackHome> mHome;
  Options mOptions;
  std::string mUrl;
  std::string mFailure;
  std::thread mPhone;
  std::vector<std::string> mAnswers;
  Bell mNever;
  Loop mLoop{mNever.descriptor()};
  Mailbox mMailbox{0, [this](std::string const& aText) { mAnswers.push_back(aText); }};
};

TEST_F(ServeVerbTest, PrintsACommandAndReturnsIt) {
  start();
  EXPECT_TRUE(send(command(kCommandId, "<Echo>hi &amp;\n<b/></Echo>")));
  EXPECT_EQ(answer(), "<Echo>hi &amp;\n<b/></Echo>");
  EXPECT_THAT(mAnswers,
              ElementsAre(HasSubstr("<RelatesTo>" + std::string(kCommandId) + "</RelatesTo>")));
  EXPECT_EQ(stop(), "command tv " + std::string(kCommandId) + " <Echo>hi &amp;\\n<b/></Echo>\n");
}

TEST_F(ServeVerbTest, ReturnsWhatItWasToldTo) {
  start("<Yes/>");
  send(command(kCommandId, "<Echo/>"));
  EXPECT_EQ(answer(), "<Yes/>");
  stop();
}

TEST_F(ServeVerbTest, ReturnsNothingWhenToldSo) {
  start("", true);
  send(command(kCommandId, "<Echo/>"));
  EXPECT_EQ(stop(), "{\"event\":\"command\",\"message\":\"" + std::string(kCommandId) +
                        "\",\"sender\":\"tv\",\"text\":\"<Echo/>\"}\n");
  mMailbox.serve();
  EXPECT_TRUE(mAnswers.empty());
}

TEST_F(ServeVerbTest, HearsCommandsInTheirOrderAndEachOnce) {
  start("");
  std::string expected;
  for (int number = 0; number < 100; ++number) {
    std::string const id = Identifier::create();
    std::string const text = "<N>" + std::to_string(number) + "</N>";
    send(command(id, text));
    send(command(id, text));
    expected += "command tv " + id + " " + text + "\n";
  }
  EXPECT_EQ(stop(), expected);
}

TEST_F(ServeVerbTest, DropsWhatIsNoCommand) {
  start();
  send("no XML");
  send(command("no ID", "<Hostile/>"));
  send(command(kCommandId, ""));
  send(CommandMessages("tv").answer(kCommandId, "<Hostile/>"));
  send(CommandMessages("tv").command(Identifier::create(), "tcp://239.1.2.3:1/", "<Unanswered/>"));
  send(command(Identifier::create(), "<Good/>"));
  EXPECT_EQ(answer(), "<Good/>");
  EXPECT_THAT(stop(), MatchesRegex("command tv [^ ]+ <Unanswered/>\ncommand tv [^ ]+ <Good/>\n"));
}

TEST_F(ServeVerbTest, LeavesInOrder) {
  start();
  stop();
  EXPECT_THAT(mHome->receiveMessage(), HasSubstr("<Bye>"));
}

}  // namespace
}  // namespace ZelvCtl
