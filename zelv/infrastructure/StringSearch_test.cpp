#include "zelv/infrastructure/StringSearch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using Zelv::Infrastructure::StringSearch;

using Patterns = std::vector<std::string>;
using Matches = std::vector<std::pair<std::string, unsigned int>>;
using Tree = std::unique_ptr<StringSearch::s_node>;

int first(Patterns const& aPatterns, std::string const& aText) {
  return StringSearch::FindFirst(aPatterns, aText.data(), static_cast<unsigned>(aText.size()));
}

Matches all(Patterns const& aPatterns, std::string const& aText) {
  Matches matches;
  EXPECT_EQ(
      StringSearch::FindAll(aPatterns, aText.data(), static_cast<unsigned>(aText.size()), matches),
      1U);
  return matches;
}

Tree tree(Patterns const& aPatterns) {
  return Tree(StringSearch::m_BuildTree(aPatterns));
}

TEST(StringSearch, SharesTheNodeOfACommonFirstByte) {
  Tree const root = tree({"ab", "ac"});
  ASSERT_THAT(root->children, SizeIs(1));
  StringSearch::s_node const& a = *root->children[0];
  EXPECT_EQ(a.value, 'a');
  EXPECT_EQ(a.parent, root.get());
  ASSERT_THAT(a.children, SizeIs(2));
  EXPECT_EQ(a.children[0]->value, 'b');
  EXPECT_EQ(a.children[1]->value, 'c');
  EXPECT_THAT(a.children[1]->outputs, ElementsAre("ac"));
}

TEST(StringSearch, LooksForTheNextByteAmongTheRootsChildren) {
  // "aa" comes to lie at the node of "a", and is told at a lone one.
  Tree const root = tree({"ab", "aa"});
  EXPECT_THAT(root->children[0]->outputs, ElementsAre("aa"));
  EXPECT_EQ(first({"ab", "aa"}, "xa"), 0);
  EXPECT_THAT(all({"ab", "aa"}, "xab"), ElementsAre(Pair("aa", 0U), Pair("ab", 1U)));
}

TEST(StringSearch, ComparesOnlyAsManyOfTheRootsChildrenAsTheCurrentNodeHas) {
  // At the second byte of "cb" the node of "c" has no child, so none of the root's is looked at; at
  // that of "ca" it has one, so the first of the root's is, which is "a".
  Tree const root = tree({"a", "b", "cb", "ca"});
  ASSERT_THAT(root->children, SizeIs(3));
  EXPECT_THAT(root->children[2]->children, SizeIs(1));
  EXPECT_THAT(root->children[0]->outputs, ElementsAre("a", "ca"));
}

TEST(StringSearch, MakesASecondChildForARepeatedPattern) {
  Tree const root = tree({"ab", "ab"});
  ASSERT_THAT(root->children, SizeIs(1));
  StringSearch::s_node const& a = *root->children[0];
  ASSERT_THAT(a.children, SizeIs(2));
  EXPECT_EQ(a.children[0]->value, a.children[1]->value);
  EXPECT_THAT(all({"ab", "ab"}, "ab"), ElementsAre(Pair("ab", 0U)));
}

TEST(StringSearch, TakesTheLastOfTwoChildrenInASearchAndTheFirstForAFailure) {
  Tree const root = tree({"ab", "ab", "cab"});
  StringSearch::s_node const& a = *root->children[0];
  StringSearch::s_node const* const cab = root->children[1]->children[0]->children[0];
  EXPECT_EQ(cab->fail, a.children[0]);
}

TEST(StringSearch, FailsToTheLongestSuffixThatIsAPrefix) {
  Tree const root = tree({"he", "she"});
  EXPECT_EQ(root->fail, root.get());
  StringSearch::s_node const* const h = root->children[0];
  StringSearch::s_node const* const she = root->children[1]->children[0]->children[0];
  EXPECT_EQ(h->fail, root.get());
  EXPECT_EQ(she->fail, h->children[0]);
  EXPECT_THAT(she->outputs, ElementsAre("she", "he"));
}

TEST(StringSearch, FindsNothingWithoutPatterns) {
  EXPECT_EQ(first({}, "text"), -1);
  EXPECT_THAT(all({}, "text"), IsEmpty());
}

TEST(StringSearch, FindsNothingInAnEmptyBuffer) {
  EXPECT_EQ(first({"a", ""}, ""), -1);
  EXPECT_EQ(StringSearch::FindFirst({"a"}, nullptr, 0), -1);
}

TEST(StringSearch, FindsTheEndOfAHeaderBlock) {
  EXPECT_EQ(first({"\r\n\r\n"}, "a\r\n\r\nb"), 1);
  EXPECT_EQ(first({"\r\n\r\n"}, "\r\n\r\r\n\r\n"), 3);
  EXPECT_EQ(first({"\r\n\r\n"}, "\r\n\r"), -1);
}

TEST(StringSearch, FindsTheMatchThatEndsFirst) {
  EXPECT_EQ(first({"abcd", "bc"}, "abcd"), 1);
  EXPECT_EQ(first({"she", "he"}, "she"), 0);
}

TEST(StringSearch, ReportsOverlappingMatches) {
  EXPECT_THAT(all({"aa"}, "aaa"), ElementsAre(Pair("aa", 0U), Pair("aa", 1U)));
}

TEST(StringSearch, AppendsToTheMatchesThatAreThere) {
  Matches matches{{"before", 7}};
  StringSearch::FindAll({"a"}, "a", 1, matches);
  EXPECT_THAT(matches, ElementsAre(Pair("before", 7U), Pair("a", 0U)));
}

TEST(StringSearch, CountsZeroBytesLikeOthers) {
  std::string const text("a\0b\0c", 5);
  EXPECT_EQ(first({std::string("\0c", 2)}, text), 3);
  EXPECT_EQ(first({"b"}, text), 2);
}

TEST(StringSearch, HasAnEmptyPatternEndBehindEachByteThatLeadsToTheRoot) {
  EXPECT_EQ(first({""}, "ab"), 1);
  EXPECT_THAT(all({""}, "ab"), ElementsAre(Pair("", 1U), Pair("", 2U)));
}

TEST(StringSearch, DeletesATreeAsDeepAsItsPatternIsLong) {
  Tree const root = tree({std::string(1000000, 'a')});
  EXPECT_EQ(root->children.size(), 1U);
}

}  // namespace
