#include <gmock/gmock.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/testing/HierarchicalDBTest.h"
#include "zelv/platform/fake/FakeLog.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::Fake::LogCapture;
using Testing::repeat;

/// Whatever it is given, it gives an answer and works on.
class HierarchicalDBHostile : public Testing::HierarchicalDBTest {
 protected:
  /// Keeps what is refused out of the output.
  LogCapture mLog;
};

/// Texts that nobody well-behaved would pass.
std::vector<std::string> hostile() {
  using namespace std::string_literals;
  return {"\0"s,
          "/a\0b"s,
          "/a/b\0/text()"s,
          std::string(1 << 20, 'x'),
          "/a/" + std::string(1 << 20, 'x') + "/text()",
          std::string(1 << 20, '/'),
          std::string(1 << 20, '['),
          std::string(1 << 20, ']'),
          repeat("/a[", 100000),
          repeat("/a[b='", 1000),
          repeat("[@x='1']", 20000),
          repeat("(", 100000),
          repeat("/a/parent::*", 50000),
          repeat("<a>", 100000),
          repeat("<a b='", 1000),
          repeat("&amp;", 10000),
          repeat("<!--", 10000),
          "/a[@x='1",
          "/a[@x=\"1']",
          "/a]b[",
          "/a/b[']/text()",
          "/a/b[c='1' and ",
          "/a/b[ and ]",
          "/a/b[@]",
          "/a/@",
          "/a/..",
          "/..",
          "//",
          "///",
          "/a//text()",
          "/a/b|/a/c",
          "/a/\xFF\xFE/text()",
          "/a/b[@x='\xF0']/text()",
          "/a/text()\n",
          "%s%n%s%n",
          "/a/%n/text()",
          "<a>\xF0",
          "]]>",
          "-1",
          "count(/a)",
          "/a[count(//*)>0]"};
}

TEST_F(HierarchicalDBHostile, SurvivesAnyPath) {
  load("<a x='1'><b x='2'>t</b></a>");
  for (std::string const& path : hostile()) {
    std::string result;
    try {
      int const code = mDatabase.getContent(path, result);
      EXPECT_TRUE(code == 0 || code == -1);
    } catch (std::out_of_range const&) {
      EXPECT_EQ(result, "");
    }
  }
  EXPECT_EQ(all(), "<a x='1'><b x='2'>t</b></a>");
}

TEST_F(HierarchicalDBHostile, SurvivesAnyPathAndValue) {
  for (std::string const& path : hostile()) {
    load("<a x='1'><b x='2'>t</b></a>");
    for (std::string const prefix : {"", "/a/b/", "/a/@"}) {
      try {
        int const code = write(prefix + path, "<v/>", true);
        EXPECT_TRUE(code == 0 || code == -1);
      } catch (std::out_of_range const&) {
      }
    }
    EXPECT_EQ(write("/a/x", "<x/>"), 0) << "the document still works";
  }
  for (std::string const& value : hostile()) {
    load("<a x='1'><b x='2'>t</b></a>");
    for (char const* path : {"/a/b/text()", "/a/@x", "/a/@y", "/a/b", "/a/c"}) {
      int const code = write(path, value, true);
      EXPECT_TRUE(code == 0 || code == -1);
    }
    EXPECT_EQ(mDatabase.loadFromString(all()), 0) << "what was written loads again";
  }
}

TEST_F(HierarchicalDBHostile, SurvivesAnyText) {
  for (std::string const& text : hostile()) {
    for (std::string const prefix : {"", "<a>", "<a b='", "<?xml encoding='UTF-8'?><a>"}) {
      int const code = mDatabase.loadFromString(prefix + text);
      EXPECT_EQ(code == 0, mDatabase.isLoaded());
    }
  }
}

}  // namespace
}  // namespace Zelv::Infrastructure
