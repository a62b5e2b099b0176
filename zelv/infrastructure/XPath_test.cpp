#include "zelv/infrastructure/XPath.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "zelv/infrastructure/testing/LiteralText.h"

namespace Zelv::Infrastructure {
namespace {

using Testing::LiteralText;

char const cDevice[] = "2cb63c08-01e0-41cd-950e-1566f18e0983";
constexpr std::size_t cMebibyte = std::size_t{1024} * 1024;

std::string repeated(std::string const& aPiece) {
  std::string text;
  while (text.size() < cMebibyte) {
    text += aPiece;
  }
  return text;
}

bool isLocal(std::string const& aXPath) {
  return XPath::isLocalXPath(aXPath, GUID(cDevice));
}

TEST(XPath, RemovesTheAttributeStepAndAllBehindIt) {
  EXPECT_EQ(XPath::removeAttributeStep("/Zelv/Device/@ID"), "/Zelv/Device");
  EXPECT_EQ(XPath::removeAttributeStep("/a/@b/@c"), "/a");
  EXPECT_EQ(XPath::removeAttributeStep("/@a"), "");
  EXPECT_EQ(XPath::removeAttributeStep("/Zelv/Device/text()"), "/Zelv/Device/text()");
  EXPECT_EQ(XPath::removeAttributeStep("/a[@b='c']"), "/a[@b='c']");
  EXPECT_EQ(XPath::removeAttributeStep("//@"), "/");
  EXPECT_EQ(XPath::removeAttributeStep(""), "");
}

TEST(XPath, RemovesTheTextStepAndAllBehindIt) {
  EXPECT_EQ(XPath::removeTextStep("/Zelv/Name/text()"), "/Zelv/Name");
  EXPECT_EQ(XPath::removeTextStep("/a/text()/b/text()"), "/a");
  EXPECT_EQ(XPath::removeTextStep("/a[text()='x']"), "/a[text()='x']");
  EXPECT_EQ(XPath::removeTextStep("/a/text("), "/a/text(");
  EXPECT_EQ(XPath::removeTextStep("/text()"), "");
  EXPECT_EQ(XPath::removeTextStep(""), "");
}

TEST(XPath, RemovesEveryPredicate) {
  EXPECT_EQ(XPath::removePredicates("/a[@b='c']/d[1]/e"), "/a/d/e");
  EXPECT_EQ(XPath::removePredicates("/a[]"), "/a");
  EXPECT_EQ(XPath::removePredicates("[a][b]"), "");
  EXPECT_EQ(XPath::removePredicates("/a/b"), "/a/b");
  EXPECT_EQ(XPath::removePredicates(""), "");
}

TEST(XPath, EndsAPredicateAtTheFirstClosingBracket) {
  EXPECT_EQ(XPath::removePredicates("/a[b[1]]/c"), "/a]/c");
  EXPECT_EQ(XPath::removePredicates("/a]b[c]"), "/a]b");
  EXPECT_EQ(XPath::removePredicates("/a[b=']']/c"), "/a']/c");
}

TEST(XPath, LeavesAPredicateThatIsNotClosed) {
  EXPECT_EQ(XPath::removePredicates("/a[1]/b[2/c"), "/a/b[2/c");
  EXPECT_EQ(XPath::removePredicates("["), "[");
  EXPECT_EQ(XPath::removePredicates("/a]["), "/a][");
  EXPECT_EQ(XPath::removePredicates(std::string(cMebibyte, '[')), std::string(cMebibyte, '['));
}

TEST(XPath, TellsTheFirstPredicateAndWhatStandsBeforeIt) {
  std::string prefix = "old";
  EXPECT_EQ(XPath::getFirstPredicate("/a/b[@c='d']/e[2]", prefix), "@c='d'");
  EXPECT_EQ(prefix, "/a/b");
  EXPECT_EQ(XPath::getFirstPredicate("]a[b[c]d]", prefix), "b[c");
  EXPECT_EQ(prefix, "]a");
  EXPECT_EQ(XPath::getFirstPredicate("/a[]", prefix), "");
  EXPECT_EQ(prefix, "/a");
}

TEST(XPath, TellsNoPredicateAndNoPrefixIfABracketIsMissing) {
  for (char const* path : {"/a/b", "/a[b", "/a]b", "/a]b[", ""}) {
    std::string prefix = "old";
    EXPECT_EQ(XPath::getFirstPredicate(path, prefix), "") << path;
    EXPECT_EQ(prefix, "") << path;
  }
}

TEST(XPath, TellsTheFirstPredicateOfAPathThatBecomesThePrefix) {
  std::string path = "/a/b[@c='d']/e[2]";
  EXPECT_EQ(XPath::getFirstPredicate(path, path), "@c='d'");
  EXPECT_EQ(path, "/a/b");
}

TEST(XPath, TellsTheLastStep) {
  EXPECT_EQ(XPath::getLastStep("/a/b/text()"), "text()");
  EXPECT_EQ(XPath::getLastStep("/a/@b"), "@b");
  EXPECT_EQ(XPath::getLastStep("/a[b/c]"), "c]");
  EXPECT_EQ(XPath::getLastStep("/a"), "a");
}

TEST(XPath, TellsNoLastStepWithoutASlashOrBehindAFinalOne) {
  EXPECT_EQ(XPath::getLastStep("/a/b/"), "");
  EXPECT_EQ(XPath::getLastStep("/"), "");
  EXPECT_EQ(XPath::getLastStep("a"), "");
  EXPECT_EQ(XPath::getLastStep(""), "");
}

TEST(XPath, CountsPathsIntoThisDeviceAsLocal) {
  EXPECT_TRUE(isLocal("/Zelv/Devices"));
  EXPECT_TRUE(isLocal("/Zelv/"));
  EXPECT_TRUE(isLocal(std::string("/Zelv[@DeviceId='") + cDevice + "']/Devices"));
  EXPECT_TRUE(isLocal(std::string("/Zelv[@DeviceId=\"") + cDevice + "\"]/"));
}

TEST(XPath, CountsNoOtherPathAsLocal) {
  std::string const id = cDevice;
  for (std::string const& path :
       {std::string("/Zelv"), std::string(""), std::string("Zelv/"), std::string("//Zelv/"),
        std::string("/ZelvX/"), std::string("/zelv/"), std::string("/Zelv["),
        std::string("/Zelv[@DeviceId="), std::string("/Zelv[@DeviceId='"),
        "/Zelv[@DeviceId='" + id + "']", "/Zelv[@DeviceId='" + id + "\"]/",
        "/Zelv[@DeviceId=" + id + "]/", "/Zelv[ @DeviceId='" + id + "']/",
        "/Zelv[@DeviceId='{" + id + "}']/", "/Zelv[@DeviceId=|" + id + "|]/",
        std::string("/Zelv[@DeviceId='2CB63C08-01E0-41CD-950E-1566F18E0983']/"),
        std::string("/Zelv[@DeviceId='11111111-01e0-41cd-950e-1566f18e0983']/")}) {
    EXPECT_FALSE(isLocal(path)) << path;
  }
}

TEST(XPath, CutsRandomTextsAsTheLiteralVersions) {
  std::mt19937 random(4);
  std::string const alphabet("//@@[[]]]ab'\"text()\0", 20);
  for (int i = 0; i < 150000; ++i) {
    std::string text;
    for (std::size_t length = random() % 24; text.size() < length;) {
      text += random() % 8 == 0 ? "/text()" : std::string(1, alphabet[random() % alphabet.size()]);
    }
    std::string prefix;
    std::string literalPrefix;
    ASSERT_EQ(XPath::removePredicates(text), LiteralText::removePredicates(text)) << text;
    ASSERT_EQ(XPath::removeAttributeStep(text), LiteralText::before(text, "/@")) << text;
    ASSERT_EQ(XPath::removeTextStep(text), LiteralText::before(text, "/text()")) << text;
    ASSERT_EQ(XPath::getLastStep(text), LiteralText::lastStep(text)) << text;
    ASSERT_EQ(XPath::getFirstPredicate(text, prefix),
              LiteralText::firstPredicate(text, literalPrefix))
        << text;
    ASSERT_EQ(prefix, literalPrefix) << text;
  }
}

TEST(XPath, FindsMutatedPathsLocalAsTheLiteralVersion) {
  std::mt19937 random(5);
  std::string const id = cDevice;
  int local = 0;
  for (int i = 0; i < 20000; ++i) {
    char const quote = random() % 2 == 0 ? '\'' : '"';
    std::string path = "/Zelv[@DeviceId=" + std::string(1, quote) + id + quote + "]/a";
    if (random() % 4 != 0) {
      path[random() % path.size()] = "/[]'\"a"[random() % 6];
    }
    path.resize(random() % 3 == 0 ? random() % path.size() : path.size());
    ASSERT_EQ(isLocal(path), LiteralText::isLocalXPath(path, id)) << path;
    local += isLocal(path) ? 1 : 0;
  }
  EXPECT_GT(local, 1000);
  EXPECT_LT(local, 19000);
}

// Quadratic work would take minutes on these.
TEST(XPath, TakesTextsOfAMebibyte) {
  std::string prefix;
  std::string const steps = repeated("/a[@ID='b']");
  EXPECT_EQ(XPath::removePredicates(steps).size(), steps.size() / 11 * 2);
  EXPECT_EQ(XPath::removePredicates(repeated("[]")), "");
  EXPECT_EQ(XPath::removePredicates(repeated("[[]]")), std::string(cMebibyte / 4, ']'));
  EXPECT_EQ(XPath::removeAttributeStep(repeated("/")), repeated("/"));
  EXPECT_EQ(XPath::removeTextStep(repeated("/text(")), repeated("/text("));
  EXPECT_EQ(XPath::getFirstPredicate(repeated("["), prefix), "");
  EXPECT_EQ(XPath::getFirstPredicate(repeated("]"), prefix), "");
  EXPECT_EQ(XPath::getLastStep(repeated("a")), "");
  EXPECT_FALSE(isLocal(repeated("/Zelv[")));
}

}  // namespace
}  // namespace Zelv::Infrastructure
