#include "apps/zelvctl/InputVerb.h"

#include <gmock/gmock.h>

#include "apps/zelvctl/testing/VerbTest.h"

namespace ZelvCtl {
namespace {

using testing::HasSubstr;

class InputVerbTest : public VerbTest {};

TEST_F(InputVerbTest, SendsEachEventOnce) {
  FakeSet set;
  Options options = optionsFor(set);
  options.inputType = "Key";
  options.values = {"UP", "DOWN"};
  options.json = true;
  EXPECT_EQ(run<InputVerb>(options), "");
  EXPECT_EQ(mOut.str(), "{\"sent\":2}\n");
  std::string const head = "<OnInput><Type>Key</Type><Value>";
  std::string const tail = "</Value><DeviceGuid>" + options.id +
                           "</DeviceGuid><UserNickname>Tom</UserNickname></OnInput>\n";
  EXPECT_EQ(set.home().receive(), head + "UP" + tail);
  EXPECT_EQ(set.home().receive(), head + "DOWN" + tail);
  EXPECT_THAT(set.home().receiveMessage(), HasSubstr("<Bye>"));
}

TEST_F(InputVerbTest, RefusesWhatWouldBeCutOff) {
  FakeSet set;
  Options options = optionsFor(set);
  options.values = {std::string(5000, 'x')};
  EXPECT_THAT(run<InputVerb>(options), HasSubstr("an event has at most 4094 bytes"));
}

}  // namespace
}  // namespace ZelvCtl
