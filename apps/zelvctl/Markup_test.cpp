#include "apps/zelvctl/Markup.h"

#include <gtest/gtest.h>

namespace ZelvCtl {
namespace {

TEST(Markup, StandsBetweenTagsWhenItIsWellFormed) {
  for (char const* text : {"", "text", "<a/>", "<a b='c'>d</a>", "one <b>two</b> three<c/>",
                           "a &lt; b", "Tom & Ann", "<![CDATA[<]]>"}) {
    EXPECT_TRUE(Markup::isContent(text)) << text;
  }
}

TEST(Markup, DoesNotWhenItWouldBreakOutOrBeCut) {
  for (char const* text : {"<", "a < b", "<a>", "</a>", "<a></b>", "</x>", "</x><x>", "</x><y/><x>",
                           "<a b=c/>", "<a b='c/>"}) {
    EXPECT_FALSE(Markup::isContent(text)) << text;
    EXPECT_FALSE(Markup::isElement(text)) << text;
  }
}

TEST(Markup, IsAnElementWhenItBeginsWithOne) {
  EXPECT_TRUE(Markup::isElement("<Echo>text</Echo>"));
  EXPECT_TRUE(Markup::isElement("<Echo/>"));
  EXPECT_FALSE(Markup::isElement("text"));
  EXPECT_FALSE(Markup::isElement(""));
  EXPECT_FALSE(Markup::isElement("text <Echo/>"));
  EXPECT_FALSE(Markup::isElement("<!-- remark -->"));
}

}  // namespace
}  // namespace ZelvCtl
