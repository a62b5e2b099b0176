#include "zelv/infrastructure/HTTPHeader.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Zelv::Infrastructure::HTTPHeader;

struct Line {
  char const* text;
  char const* name;
  char const* value;
};

class HTTPHeaderLine : public ::testing::TestWithParam<Line> {};

TEST_P(HTTPHeaderLine, GivesNameAndValue) {
  HTTPHeader const header{std::string(GetParam().text)};
  EXPECT_EQ(header.GetName(), GetParam().name);
  EXPECT_EQ(header.GetValue(), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    HTTPHeader, HTTPHeaderLine,
    ::testing::Values(Line{"Content-Length: 10", "Content-Length", "10"},
                      Line{"Accept:*/*", "Accept", "*/*"},
                      Line{"\t Name \r\n : \t value \r\n", "Name", "value"},
                      // A value ends at its first colon.
                      Line{"Host: 192.0.2.7:4450", "Host", "192.0.2.7"},
                      Line{"Name: :value", "Name", ""}, Line{"Name", "Name", ""},
                      Line{"Name:", "Name", ""}, Line{"Name::value", "Name", "value"},
                      // The empty part in front of the first colon does not count.
                      Line{": text: more", "text", "more"}, Line{":text", "text", ""},
                      Line{" : value", "", "value"}, Line{":", "", ""}, Line{"", "", ""}));

TEST(HTTPHeader, IsEmptyAtFirst) {
  HTTPHeader const header;
  EXPECT_EQ(header.GetName(), "");
  EXPECT_EQ(header.GetValue(), "");
}

TEST(HTTPHeader, ReplacesWhatItHeldWithWhatItReads) {
  HTTPHeader header("Name", "value");
  header.Parse("Other");
  EXPECT_EQ(header.GetName(), "Other");
  EXPECT_EQ(header.GetValue(), "");
}

TEST(HTTPHeader, IsWrittenWithOneBlank) {
  HTTPHeader const header("Name", "value");
  EXPECT_EQ(header.Serialize(false), "Name: value");
  EXPECT_EQ(header.Serialize(true), "Name: value\r\n");
}

TEST(HTTPHeader, MayBeCopied) {
  HTTPHeader const header("Name", "value");
  HTTPHeader copy;
  copy = header;
  EXPECT_EQ(copy.Serialize(false), header.Serialize(false));
}

}  // namespace
