#pragma once

#include <cstddef>
#include <string_view>

#include "zelv/infrastructure/XPathPlan.h"

namespace Zelv::Infrastructure {

/// Turns an expression into a plan, if it is made of the common steps alone:
/// - a name, with or without a prefix, or "*"; "//" before at most one of them;
/// - "parent::*";
/// - at the end "text()", "node()" or "@name";
/// - predicates "[n]" and tests, joined by "and", of "@name", "text()" or a child's name: its
///   presence, or one of = != < > <= >= and a literal or a number.
class XPathParser {
 public:
  /// The views of the plan will point into aText.
  XPathParser(std::string_view aText, XPathPlan& aPlan) : mText(aText), mPlan(aPlan) {}

  /// False for an expression of another kind, or of none; the plan is of no use then.
  bool parse();

 private:
  bool slash();
  bool step();
  bool attributeStep();
  bool namedStep();
  bool parentStep();
  bool elementStep(std::string_view aName, bool aAny);
  bool tests();
  bool predicate();
  bool position();
  bool conjunction();
  bool test();
  bool subject(XPathTest& aTest);
  bool relation(XPathTest& aTest);
  bool operation(XPathTest::By& aBy);
  bool value(XPathTest& aTest);
  bool literal(std::string_view& aLiteral);

  XPathStep* addStep(XPathStep::Axis aAxis);
  XPathTest* addTest();
  std::string_view name();
  std::string_view digits();
  bool take(char aToken);
  bool take(char aFirst, char aSecond);
  bool takeName(std::string_view aName);
  void skipBlanks();
  char next() const { return mAt < mText.size() ? mText[mAt] : '\0'; }
  bool atEnd() const { return mAt == mText.size(); }

  std::string_view mText;
  XPathPlan& mPlan;
  std::size_t mAt = 0;
  int mLevel = 0;  ///< below the matches of "//"
  bool mDescends = false;
  bool mDescendNext = false;
  bool mLastStep = false;
};

}  // namespace Zelv::Infrastructure
