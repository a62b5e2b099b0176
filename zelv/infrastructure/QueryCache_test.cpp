#include "zelv/infrastructure/QueryCache.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "zelv/infrastructure/Query.h"

namespace Zelv::Infrastructure {
namespace {

std::string path(std::size_t aNumber) {
  return "/a/n" + std::to_string(aNumber);
}

TEST(Query, KeepsThePathAndRewritesTheExpression) {
  Query query("a/b[c='1']/text()");
  EXPECT_EQ(query.path(), "a/b[c='1']/text()");
  EXPECT_EQ(query.expression().text(), "/a/b/c[text()='1']/parent::*/text()");
  EXPECT_FALSE(query.asksNames());
  ASSERT_NE(query.parent(), nullptr);
  EXPECT_EQ(query.parent()->text(), "/a/b/c[text()='1']/parent::*");
}

TEST(Query, HasAParentOnlyForATextStep) {
  for (char const* other :
       {"/a/b", "/a/@b", "/a/node()", "/a/xtext()", "/a/text() ", "/a/name()"}) {
    EXPECT_EQ(Query(other).parent(), nullptr) << other;
  }
}

TEST(Query, CutsTheNameStep) {
  Query const query("/a/b/name()");
  EXPECT_TRUE(query.asksNames());
  EXPECT_EQ(query.expression().text(), "/a/b");
}

TEST(QueryCache, GivesTheSameQueryForTheSamePath) {
  QueryCache cache;
  Query const* const query = &cache.find("/a/b");
  EXPECT_EQ(query->path(), "/a/b");
  cache.find("/a/c");
  EXPECT_EQ(&cache.find("/a/b"), query);
  EXPECT_EQ(&cache.find("/a/b"), query);
}

TEST(QueryCache, TellsPathsApart) {
  QueryCache cache;
  for (std::size_t turn = 0; turn < 3; ++turn) {
    for (std::size_t number = 0; number < 2 * QueryCache::Capacity; ++number) {
      ASSERT_EQ(cache.find(path(number)).path(), path(number));
    }
  }
}

TEST(QueryCache, ForgetsTheOldestFirst) {
  QueryCache cache;
  Query const* const oldest = &cache.find(path(0));
  Query const* const second = &cache.find(path(1));
  for (std::size_t number = 2; number < QueryCache::Capacity; ++number) {
    cache.find(path(number));
  }
  EXPECT_EQ(&cache.find(path(0)), oldest);
  cache.find(path(QueryCache::Capacity));
  EXPECT_EQ(&cache.find(path(1)), second);
}

TEST(QueryCache, KeepsNothingOfAPathThatThrows) {
  QueryCache cache;
  Query const* const good = &cache.find("/a/b");
  EXPECT_THROW(cache.find("/a/b[1]"), std::out_of_range);
  EXPECT_THROW(cache.find("/a/b[1]"), std::out_of_range);
  EXPECT_EQ(&cache.find("/a/b"), good);
}

TEST(QueryCache, DoesNotKeepLongPaths) {
  QueryCache cache;
  Query const* const good = &cache.find("/a/b");
  for (std::size_t number = 0; number < 2 * QueryCache::Capacity; ++number) {
    std::string const longPath = "/" + std::string(QueryCache::MaxPath, 'x') + path(number);
    ASSERT_EQ(cache.find(longPath).path(), longPath);
  }
  EXPECT_EQ(&cache.find("/a/b"), good);
}

}  // namespace
}  // namespace Zelv::Infrastructure
