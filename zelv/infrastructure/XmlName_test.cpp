#include "zelv/infrastructure/XmlName.h"

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <string>

namespace Zelv::Infrastructure {
namespace {

/// Whether the library reads back an attribute of this name.
bool isReadBack(std::string const& aName) {
  TiXmlDocument document;
  document.Parse(("<a " + aName + "='1'/>").c_str());
  TiXmlElement const* const element = document.FirstChildElement();
  return !document.Error() && element->Attribute(aName) != nullptr;
}

TEST(XmlName, IsWhatTheLibraryReadsBack) {
  for (int byte = 1; byte < 256; ++byte) {
    for (std::string const before : {"", "x"}) {
      std::string const name = before + static_cast<char>(byte);
      EXPECT_EQ(XmlName::is(name), isReadBack(name)) << byte << " behind '" << before << "'";
    }
  }
}

TEST(XmlName, IsNotEmpty) {
  EXPECT_FALSE(XmlName::is(""));
}

TEST(XmlName, HoldsNoNul) {
  EXPECT_FALSE(XmlName::is(std::string("a\0b", 3)));
}

TEST(XmlName, MayHaveAPrefix) {
  EXPECT_TRUE(XmlName::is("u:Introduce-1.2_x"));
}

}  // namespace
}  // namespace Zelv::Infrastructure
