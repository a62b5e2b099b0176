#include "zelv/controller/SeenMessages.h"

#include <gmock/gmock.h>

#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Zelv::Controller::SeenMessages;

using Entries = std::vector<std::pair<std::string, std::int64_t>>;

Entries forgotten(SeenMessages& aSeen, std::int64_t aLimit) {
  Entries entries;
  aSeen.forgetBefore(aLimit, [&](std::string const& aId, std::int64_t aTime) {
    entries.emplace_back(aId, aTime);
  });
  return entries;
}

TEST(SeenMessages, KnowsEveryCopyButTheFirst) {
  SeenMessages seen;
  EXPECT_FALSE(seen.check("a", 10));
  EXPECT_TRUE(seen.check("a", 11));
  EXPECT_TRUE(seen.check("a", 12));
  EXPECT_FALSE(seen.check("b", 12));
  EXPECT_EQ(2U, seen.size());
}

TEST(SeenMessages, KeepsTheTimeOfTheFirstCopy) {
  SeenMessages seen;
  seen.check("a", 10);
  seen.check("a", 20);
  EXPECT_THAT(forgotten(seen, 11), ElementsAre(Pair("a", 10)));
  EXPECT_FALSE(seen.check("a", 21));
}

TEST(SeenMessages, ForgetsWhatIsOlderThanTheLimitInTheOrderOfIdentifiers) {
  SeenMessages seen;
  seen.check("c", 8);
  seen.check("b", 10);
  seen.check("a", 9);
  EXPECT_THAT(forgotten(seen, 10), ElementsAre(Pair("a", 9), Pair("c", 8)));
  EXPECT_TRUE(seen.check("b", 10));
  EXPECT_THAT(forgotten(seen, 10), IsEmpty());
}

TEST(SeenMessages, KeepsTheNewestWhenThereAreTooMany) {
  SeenMessages seen;
  std::size_t const most = SeenMessages::MaxEntries;
  for (std::size_t i = 0; i < most; ++i) {
    EXPECT_FALSE(seen.check(std::to_string(i), 1));
  }
  EXPECT_TRUE(seen.check("0", 1));
  EXPECT_FALSE(seen.check("one more", 1));
  EXPECT_EQ(most, seen.size());
  EXPECT_TRUE(seen.check("1", 1));
  EXPECT_FALSE(seen.check("0", 1));  // the oldest had given way
  EXPECT_FALSE(seen.check("1", 1));
}

TEST(SeenMessages, KeepsItsOrderWhenSomeAreForgotten) {
  SeenMessages seen;
  seen.check("old", 1);
  std::size_t const most = SeenMessages::MaxEntries;
  for (std::size_t i = 0; i < most - 1; ++i) {
    seen.check(std::to_string(i), 5);
  }
  EXPECT_THAT(forgotten(seen, 2), ElementsAre(Pair("old", 1)));
  EXPECT_FALSE(seen.check("old", 5));  // now the newest
  EXPECT_FALSE(seen.check("one more", 5));
  EXPECT_TRUE(seen.check("old", 5));
  EXPECT_EQ(most, seen.size());
}

TEST(SeenMessages, TakesIdentifiersOf128Characters) {
  SeenMessages seen;
  std::string const longest(SeenMessages::MaxIdLength, 'x');
  EXPECT_FALSE(seen.check(longest, 1));
  EXPECT_TRUE(seen.check(longest, 1));
  EXPECT_FALSE(seen.check(longest + "x", 1));
  EXPECT_FALSE(seen.check(longest + "x", 1));
  EXPECT_EQ(1U, seen.size());
}

TEST(SeenMessages, MovesItsTimesWithTheClock) {
  SeenMessages seen;
  seen.check("a", 10);
  seen.shift(1000);
  EXPECT_THAT(forgotten(seen, 1010), IsEmpty());
  seen.shift(-500);
  EXPECT_THAT(forgotten(seen, 511), ElementsAre(Pair("a", 510)));
}

TEST(SeenMessages, TakesAnEmptyIdentifierLikeAnyOther) {
  SeenMessages seen;
  EXPECT_FALSE(seen.check("", 1));
  EXPECT_TRUE(seen.check("", 1));
}

}  // namespace
