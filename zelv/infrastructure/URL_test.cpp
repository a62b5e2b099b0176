#include "zelv/infrastructure/URL.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using Zelv::Infrastructure::URL;

TEST(URL, ComesBackUnchangedWithOnePathSegment) {
  URL const url("tcp://192.0.2.7:4448/service");
  EXPECT_EQ(url.getProtocol(), "tcp");
  EXPECT_EQ(url.getDomainName(), "192.0.2.7");
  EXPECT_EQ(url.getPort(), 4448);
  EXPECT_EQ(url.getPath(), "service");
  EXPECT_EQ(url.toString(), "tcp://192.0.2.7:4448/service");
}

TEST(URL, IsEmptyByDefault) {
  URL const url;
  EXPECT_EQ(url.getProtocol(), "");
  EXPECT_EQ(url.getDomainName(), "");
  EXPECT_EQ(url.getPort(), 0);
  EXPECT_EQ(url.getPath(), "");
  EXPECT_EQ(url.toString(), "://:/");
}

TEST(URL, GetsAFinalSlashWhenItHasNoPath) {
  URL const url("udp://192.0.2.7:4449");
  EXPECT_EQ(url.getPath(), "");
  EXPECT_EQ(url.toString(), "udp://192.0.2.7:4449/");
  EXPECT_EQ(URL("udp://192.0.2.7:4449/").toString(), url.toString());
}

TEST(URL, KeepsTheFirstOfTwoPathSegmentsInThePort) {
  URL const url("tcp://host:4448/a/b");
  EXPECT_EQ(url.getPort(), 4448);
  EXPECT_EQ(url.getPath(), "b");
  EXPECT_EQ(url.toString(), "tcp://host:4448/a/b");
}

TEST(URL, SkipsTheTwoCharactersBehindTheColonUnread) {
  URL const url("tcp:xyhost:1/");
  EXPECT_EQ(url.getDomainName(), "host");
  EXPECT_EQ(url.toString(), "tcp://host:1/");
}

TEST(URL, RefusesATextWithoutAColon) {
  try {
    URL const url("nothing");
    FAIL() << "no exception";
  } catch (std::logic_error const& error) {
    EXPECT_STREQ(error.what(), "Invalid URL.");
  }
}

TEST(URL, RefusesATextWithoutAPort) {
  try {
    URL const url("tcp://host/path");
    FAIL() << "no exception";
  } catch (std::out_of_range const&) {
    FAIL() << "the wrong exception";
  } catch (std::logic_error const& error) {
    EXPECT_STREQ(error.what(), "Invalid URL.");
  }
  EXPECT_THROW(URL("tcp://"), std::logic_error);
}

TEST(URL, IsOutOfRangeWhenItEndsBehindTheColon) {
  EXPECT_THROW(URL("tcp:"), std::out_of_range);
  EXPECT_THROW(URL("tcp:/"), std::out_of_range);
}

TEST(URL, KeepsItsPartsWhenParsingFails) {
  URL url("tcp://host:1/path");
  std::string bad = "tcp://host";
  EXPECT_FALSE(url.parseURL(bad));
  EXPECT_EQ(url.toString(), "tcp://host:1/path");
}

TEST(URL, ReadsThePortLikeStrtol) {
  EXPECT_EQ(URL("tcp", "host", "", "").getPort(), 0);
  EXPECT_EQ(URL("tcp", "host", "port", "").getPort(), 0);
  EXPECT_EQ(URL("tcp", "host", " 42x", "").getPort(), 42);
}

TEST(URL, TakesFourPartsUnchecked) {
  EXPECT_EQ(URL("a", "b", "c", "d").toString(), "a://b:c/d");
}

}  // namespace
