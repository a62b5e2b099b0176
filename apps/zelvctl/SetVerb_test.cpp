#include "apps/zelvctl/SetVerb.h"

#include <gmock/gmock.h>

#include "apps/zelvctl/testing/VerbTest.h"

namespace ZelvCtl {
namespace {

using testing::HasSubstr;

class SetVerbTest : public VerbTest {};

TEST_F(SetVerbTest, SendsTheValueAsItStandsAndEndsOnceItHasArrived) {
  FakeSet set;
  Options options = optionsFor(set);
  options.values = {"<b>1 &lt; 2</b>"};
  EXPECT_EQ(run<SetVerb>(options), "");
  EXPECT_EQ(mOut.str(), "");
  std::vector<std::string> const messages = set.messages(1);
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_THAT(messages[0], HasSubstr("<SetData><XPath>/Zelv/A/text()</XPath>"
                                     "<Data><b>1 &lt; 2</b></Data></SetData>"));
}

TEST_F(SetVerbTest, TellsProgramsThatItWasAcknowledged) {
  FakeSet set;
  Options options = optionsFor(set);
  options.values = {"x"};
  options.json = true;
  EXPECT_EQ(run<SetVerb>(options), "");
  EXPECT_EQ(mOut.str(), "{\"acknowledged\":true,\"path\":\"/Zelv/A/text()\"}\n");
}

}  // namespace
}  // namespace ZelvCtl
