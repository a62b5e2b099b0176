// The direct walk and the general engine are each other's oracle.

#include <gtest/gtest.h>
#include <tinyxml.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "zelv/infrastructure/XPathExpression.h"
#include "zelv/infrastructure/XPathMirror.h"
#include "zelv/infrastructure/testing/XPathComparison.h"
#include "zelv/infrastructure/testing/XPathGenerator.h"
#include "zelv/infrastructure/testing/XPathModel.h"

namespace Zelv::Infrastructure {

namespace {

using Testing::XPathComparison;
using Testing::XPathGenerator;
using Testing::XPathModel;

constexpr unsigned documents = 500;
constexpr unsigned expressionsEach = 60;
constexpr unsigned axisPathsEach = 10;

std::string print(TiXmlDocument const& aDocument) {
  std::string text;
  text << aDocument;
  return text;
}

/// Nodes that expressions are evaluated from: the document first, then every node in it.
std::vector<TiXmlNode const*> contexts(TiXmlNode const& aTop) {
  std::vector<TiXmlNode const*> all = {&aTop};
  for (std::size_t index = 0; index < all.size(); ++index) {
    TiXmlNode const* child = all[index]->FirstChild();
    for (; child; child = child->NextSibling()) {
      all.push_back(child);
    }
  }
  return all;
}

/// Compares both engines on many expressions over one document, which the seed stands for.
class Case {
 public:
  explicit Case(unsigned aSeed)
      : mSeed(aSeed),
        mRandom(aSeed),
        mGenerator([this](unsigned aBelow) { return static_cast<unsigned>(mRandom() % aBelow); }) {
    mGenerator.fill(mDocument);
  }

  void compare() {
    XPathMirror const mirror(mDocument);
    std::vector<TiXmlNode const*> const from = contexts(mDocument);
    for (unsigned count = 0; count < expressionsEach; ++count) {
      std::string const text = mGenerator.directExpression();
      XPathExpression const expression(text);
      ASSERT_TRUE(expression.isDirect()) << text;
      bool const anywhere = mRandom() % 8 == 0;
      XPathComparison const both(expression, mirror, from[anywhere ? mRandom() % from.size() : 0]);
      ASSERT_TRUE(both.agrees()) << "seed " << mSeed << "\nexpression " << text << "\ndocument "
                                 << print(mDocument) << "\n"
                                 << both.message();
      mMatched += both.matches() > 0 ? 1 : 0;
    }
  }

  /// Compares the general engine with the model on paths along the axes.
  void compareAxes() {
    XPathModel const model(mDocument);
    for (unsigned count = 0; count < axisPathsEach; ++count) {
      std::vector<XPathModel::Step> const steps = axisPath();
      std::string const text = XPathModel::text(steps);
      XPathExpression(text).evaluate(&mDocument, mResult);
      std::vector<TiXmlNode*> found;
      for (XPathItem const& item : mResult) {
        found.push_back(item.node());
      }
      ASSERT_EQ(found, model.elements(steps))
          << "seed " << mSeed << "\nexpression " << text << "\ndocument " << print(mDocument);
      mMatched += found.empty() ? 0 : 1;
    }
  }

  unsigned matched() const { return mMatched; }

 private:
  std::vector<XPathModel::Step> axisPath() {
    static std::array<char const*, 6> const axes = {
        "child", "parent", "descendant", "descendant-or-self", "ancestor-or-self", "self"};
    std::vector<XPathModel::Step> steps = {{"child", "*"}};
    for (unsigned more = mGenerator.below(5); more > 0; --more) {
      steps.push_back({axes[mGenerator.below(axes.size())],
                       mGenerator.below(2) == 0 ? "*" : mGenerator.name()});
    }
    return steps;
  }

  unsigned mSeed;
  std::mt19937 mRandom;
  XPathGenerator mGenerator;
  TiXmlDocument mDocument;
  XPathResult mResult;
  unsigned mMatched = 0;
};

TEST(XPathEngines, GiveTheSameNodesInTheSameOrder) {
  unsigned matched = 0;
  for (unsigned seed = 1; seed <= documents; ++seed) {
    Case comparison(seed);
    ASSERT_NO_FATAL_FAILURE(comparison.compare());
    matched += comparison.matched();
  }
  RecordProperty("expressions", static_cast<int>(documents * expressionsEach));
  RecordProperty("matched", static_cast<int>(matched));
  // A comparison of nothing with nothing would show little.
  EXPECT_GT(matched, documents * expressionsEach / 5);
}

TEST(XPathEngines, GiveWhatTheAxesMean) {
  unsigned matched = 0;
  for (unsigned seed = 1; seed <= documents; ++seed) {
    Case comparison(seed);
    ASSERT_NO_FATAL_FAILURE(comparison.compareAxes());
    matched += comparison.matched();
  }
  EXPECT_GT(matched, documents * axisPathsEach / 5);
}

}  // namespace

}  // namespace Zelv::Infrastructure
