#include "zelv/infrastructure/XPathDialect.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Zelv::Infrastructure {
namespace {

std::string translated(std::string aPath) {
  XPathDialect::translate(aPath);
  return aPath;
}

struct Row {
  char const* written;
  char const* evaluated;
};

class XPathDialectTable : public testing::TestWithParam<Row> {};

TEST_P(XPathDialectTable, TurnsAPathIntoWhatIsEvaluated) {
  EXPECT_EQ(translated(GetParam().written), GetParam().evaluated);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, XPathDialectTable,
    testing::Values(
        Row{"/Configuration/Services/Service[Name='DataControl']/Port/text()",
            "/Configuration/Services/Service/Name[text()='DataControl']/parent::*/Port/text()"},
        Row{"/Devices/*[LastHeartBeat<1000]/@ID",
            "/Devices/*/LastHeartBeat[text()<1000]/parent::*/@ID"},
        Row{"/a/b[c='1' and @d='2']/e", "/a/b[@d='2']/c[text()='1']/parent::*/e"},
        Row{"/a/b[c='1' and d='2']/e", "/a/b/c[text()='1']/parent::*/d[text()='2']/parent::*/e"},
        Row{"/Devices/Mobile[@ID='x']/Name/text()", "/Devices/Mobile[@ID='x']/Name/text()"},
        Row{"/Assets/*[3]/@ID", "/Assets/*[3]/@ID"},
        Row{"/Zelv/Devices/Mobile[@ID='x']/Services/Service[Name='CommandControl']/URL/text()",
            "/Zelv/Devices/Mobile[@ID='x']/Services/Service/Name[text()='CommandControl']"
            "/parent::*/URL/text()"}));

INSTANTIATE_TEST_SUITE_P(
    OddPaths, XPathDialectTable,
    testing::Values(Row{"", ""}, Row{"/", "/"}, Row{"/a/b/c", "/a/b/c"},
                    // Only the last predicate counts.
                    Row{"/a[b='1']/c[@d='2']", "/a[b='1']/c[@d='2']"},
                    Row{"/a[b='1']/c[d='2']", "/a[b='1']/c/d[text()='2']/parent::*"},
                    Row{"/a/b[c!='1']", "/a/b/c[text()!='1']/parent::*"},
                    Row{"/a/b[c>5]", "/a/b/c[text()>5]/parent::*"},
                    Row{"/a/b[c<=5]", "/a/b/c[text()<=5]/parent::*"},
                    Row{"/a/b[c=\"1\"]", "/a/b/c[text()=\"1\"]/parent::*"},
                    // "LastPing<5" is no number above 0.
                    Row{"/Devices/*[LastPing<5]/@ID",
                        "/Devices/*/LastPing[text()<5]/parent::*/@ID"},
                    Row{"/a/*[ 2 ]", "/a/*[ 2 ]"}, Row{"/a/*[2x]", "/a/*[2x]"},
                    Row{"/a/*[c='1' and @d='2']", "/a/*[@d='2']/c[text()='1']/parent::*"},
                    // Of several "and" only the first splits.
                    Row{"/a/b[c='1' and d='2' and e='3']",
                        "/a/b/c[text()='1']/parent::*/d[text()='2' and e='3']/parent::*"},
                    // A literal is not protected.
                    Row{"/a/b[c='x]y']", "/a/b/c[text()='x]y']/parent::*"},
                    Row{"/a/b[@c='x[y=z']", "/a/b[@c='x/y[text()=z']/parent::*"},
                    // Brackets that are no predicate.
                    Row{"/a/b[c='1'", "/a/b[c='1'"}, Row{"/a]b[c='1'", "/a]b[c='1'"},
                    Row{"[a='1']", "/a[text()='1']/parent::*"}));

TEST(XPathDialect, ThrowsForAPredicateWithoutComparison) {
  for (char const* path : {"/a/b[1]", "/a/b[c]", "/a/*[0]", "/a/*[-1]", "/a/*[x]", "/a/b[]",
                           "/a/b[c and @d='2']", "/a/b[c='1' and d]", "/Devices/*[@ID='a[b']"}) {
    EXPECT_THROW(translated(path), std::out_of_range) << path;
  }
}

TEST(XPathDialect, ThrowsTheStandardErrorOfCuttingAString) {
  try {
    translated("/a/b[1]");
    FAIL() << "nothing was thrown";
  } catch (std::out_of_range const& error) {
    EXPECT_EQ(std::string(error.what()).rfind("basic_string::substr", 0), 0U) << error.what();
  }
}

TEST(XPathDialect, LeavesThePathAsItWasWhenItThrows) {
  std::string path = "/a/b[c]/d";
  EXPECT_THROW(XPathDialect::translate(path), std::out_of_range);
  EXPECT_EQ(path, "/a/b[c]/d");
}

struct Predicate {
  char const* text;
  char const* name;
  char const* condition;
};

class XPathDialectPredicate : public testing::TestWithParam<Predicate> {};

TEST_P(XPathDialectPredicate, IsCutBeforeItsComparison) {
  std::string name;
  std::string condition;
  XPathDialect::separate(GetParam().text, name, condition);
  EXPECT_EQ(name, GetParam().name);
  EXPECT_EQ(condition, GetParam().condition);
}

INSTANTIATE_TEST_SUITE_P(Predicates, XPathDialectPredicate,
                         testing::Values(Predicate{"[Name='x']", "Name", "='x']"},
                                         Predicate{"[Name='x'", "Name", "='x'"},
                                         Predicate{"[Name!='x']", "Name", "!='x']"},
                                         Predicate{"[a<5]", "a", "<5]"},
                                         Predicate{"[a>5]", "a", ">5]"},
                                         Predicate{"[='x']", "", "='x']"}));

TEST(XPathDialect, CannotCutAPredicateWithoutComparison) {
  std::string name;
  std::string condition;
  EXPECT_THROW(XPathDialect::separate("[Name]", name, condition), std::out_of_range);
  EXPECT_THROW(XPathDialect::separate("", name, condition), std::out_of_range);
}

}  // namespace
}  // namespace Zelv::Infrastructure
