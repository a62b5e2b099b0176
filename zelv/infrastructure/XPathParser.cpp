#include "zelv/infrastructure/XPathParser.h"

#include "zelv/infrastructure/XPathCharacter.h"
#include "zelv/infrastructure/XPathNumber.h"

namespace Zelv::Infrastructure {

namespace {

using Axis = XPathStep::Axis;
using By = XPathTest::By;
using Of = XPathTest::Of;

// Declarations of namespaces are no attributes in XPath (section 5.3); the general engine knows.
bool isAttributeName(std::string_view aName) {
  return !aName.empty() && aName.substr(0, 5) != "xmlns";
}

By asNumber(By aBy) {
  return aBy == By::EqualText ? By::Equal : aBy == By::UnequalText ? By::Unequal : aBy;
}

}  // namespace

bool XPathParser::parse() {
  skipBlanks();
  mPlan.absolute = next() == '/';
  if (!mPlan.absolute && !step()) {
    return false;
  }
  while (!atEnd()) {
    if (mLastStep || !slash() || !step()) {
      return false;
    }
  }
  return mPlan.stepCount > 0;
}

bool XPathParser::slash() {
  if (take('/', '/')) {
    mDescendNext = true;
    return !mDescends;
  }
  return take('/');
}

bool XPathParser::step() {
  if (take('@')) {
    return attributeStep();
  }
  if (take('*')) {
    return elementStep({}, true);
  }
  return namedStep();
}

bool XPathParser::attributeStep() {
  std::string_view const attribute = name();
  XPathStep* const added = addStep(Axis::Attribute);
  if (!added || mDescendNext || !isAttributeName(attribute)) {
    return false;
  }
  added->name = attribute;
  mLastStep = true;
  return true;
}

bool XPathParser::namedStep() {
  std::string_view const text = name();
  if (text.empty()) {
    return false;
  }
  if (take(':', ':')) {
    return text == "parent" && take('*') && parentStep();
  }
  if (take('(')) {
    mLastStep = take(')') && !mDescendNext && (text == "text" || text == "node");
    return mLastStep && addStep(text == "text" ? Axis::Text : Axis::Node);
  }
  return elementStep(text, false);
}

bool XPathParser::parentStep() {
  XPathStep* const added = addStep(Axis::Parent);
  // Above the matches of "//" the walk could come to a node more than once.
  if (!added || mDescendNext || (mDescends && --mLevel < 0)) {
    return false;
  }
  if (mPlan.stepCount > 1 && (added - 1)->axis == Axis::Child) {
    (added - 1)->firstSuffices = true;
  }
  return tests();
}

bool XPathParser::elementStep(std::string_view aName, bool aAny) {
  XPathStep* const added = addStep(mDescendNext ? Axis::Descendant : Axis::Child);
  if (!added) {
    return false;
  }
  added->name = aName;
  added->anyName = aAny;
  if (mDescendNext) {
    mDescends = true;
    mDescendNext = false;
  } else {
    ++mLevel;
  }
  // Positions behind "//" count anew under every parent, which the walk does not.
  return tests() && !(added->axis == Axis::Descendant && added->hasPosition);
}

bool XPathParser::tests() {
  while (take('[')) {
    if (!predicate() || !take(']')) {
      return false;
    }
  }
  return true;
}

bool XPathParser::predicate() {
  return XPathCharacter::isDigit(next()) ? position() : conjunction();
}

bool XPathParser::position() {
  std::string_view const text = digits();
  XPathTest* const added = addTest();
  if (!added || text.find('.') != std::string_view::npos) {
    return false;
  }
  added->of = Of::Position;
  added->number = XPathNumber::parse(text);
  mPlan.steps[mPlan.stepCount - 1U].hasPosition = true;
  return true;
}

bool XPathParser::conjunction() {
  do {
    if (!test()) {
      return false;
    }
  } while (takeName("and"));
  return true;
}

bool XPathParser::test() {
  XPathTest* const added = addTest();
  return added && subject(*added) && relation(*added);
}

bool XPathParser::subject(XPathTest& aTest) {
  if (take('@')) {
    aTest.of = Of::Attribute;
    aTest.name = name();
    return isAttributeName(aTest.name);
  }
  aTest.name = name();
  if (aTest.name.empty()) {
    return false;
  }
  bool const function = take('(');
  aTest.of = function ? Of::Text : Of::Child;
  return !function || (aTest.name == "text" && take(')'));
}

bool XPathParser::relation(XPathTest& aTest) {
  aTest.by = By::Presence;
  return !operation(aTest.by) || value(aTest);
}

bool XPathParser::operation(By& aBy) {
  if (take('=')) {
    aBy = By::EqualText;
  } else if (take('!', '=')) {
    aBy = By::UnequalText;
  } else if (take('<', '=')) {
    aBy = By::LessOrEqual;
  } else if (take('<')) {
    aBy = By::Less;
  } else if (take('>', '=')) {
    aBy = By::GreaterOrEqual;
  } else if (take('>')) {
    aBy = By::Greater;
  } else {
    return false;
  }
  return true;
}

// A literal is compared as text for equality, and as a number for order (section 3.4).
bool XPathParser::value(XPathTest& aTest) {
  if (next() == '\'' || next() == '"') {
    bool const ends = literal(aTest.literal);
    aTest.number = XPathNumber::parse(aTest.literal);
    return ends;
  }
  bool const negative = take('-');
  std::string_view const number = digits();
  if (number.empty()) {
    return false;
  }
  aTest.by = asNumber(aTest.by);
  aTest.number = negative ? -XPathNumber::parse(number) : XPathNumber::parse(number);
  return true;
}

bool XPathParser::literal(std::string_view& aLiteral) {
  std::size_t const end = mText.find(mText[mAt], mAt + 1);
  if (end == std::string_view::npos) {
    return false;
  }
  aLiteral = mText.substr(mAt + 1, end - mAt - 1);
  mAt = end + 1;
  skipBlanks();
  return true;
}

XPathStep* XPathParser::addStep(Axis aAxis) {
  if (mPlan.stepCount == XPathPlan::maximumSteps) {
    return nullptr;
  }
  XPathStep& added = mPlan.steps[mPlan.stepCount++];
  added.axis = aAxis;
  added.firstTest = mPlan.testCount;
  return &added;
}

XPathTest* XPathParser::addTest() {
  if (mPlan.testCount == XPathPlan::maximumTests) {
    return nullptr;
  }
  ++mPlan.steps[mPlan.stepCount - 1U].testCount;
  return &mPlan.tests[mPlan.testCount++];
}

std::string_view XPathParser::name() {
  std::size_t const begin = mAt;
  if (!XPathCharacter::isNameStart(next())) {
    return {};
  }
  while (XPathCharacter::isNamePart(next())) {
    ++mAt;
  }
  if (next() == ':' && mAt + 1 < mText.size() && XPathCharacter::isNamePart(mText[mAt + 1])) {
    ++mAt;
    while (XPathCharacter::isNamePart(next())) {
      ++mAt;
    }
  }
  std::string_view const found = mText.substr(begin, mAt - begin);
  skipBlanks();
  return found;
}

// A number as the grammar has it: "5", "5.", "5.1" or ".1".
std::string_view XPathParser::digits() {
  std::size_t const begin = mAt;
  while (XPathCharacter::isDigit(next())) {
    ++mAt;
  }
  std::size_t const whole = mAt - begin;
  if (next() == '.') {
    ++mAt;
    while (XPathCharacter::isDigit(next())) {
      ++mAt;
    }
  }
  std::size_t const length = mAt - begin;
  bool const isNumber = whole > 0 || length > 1;
  std::string_view const found = mText.substr(begin, isNumber ? length : 0);
  skipBlanks();
  return found;
}

bool XPathParser::take(char aToken) {
  if (next() != aToken) {
    return false;
  }
  ++mAt;
  skipBlanks();
  return true;
}

bool XPathParser::take(char aFirst, char aSecond) {
  if (next() != aFirst || mAt + 1 >= mText.size() || mText[mAt + 1] != aSecond) {
    return false;
  }
  ++mAt;
  return take(aSecond);
}

bool XPathParser::takeName(std::string_view aName) {
  std::size_t const before = mAt;
  if (name() == aName) {
    return true;
  }
  mAt = before;
  return false;
}

void XPathParser::skipBlanks() {
  while (XPathCharacter::isBlank(next())) {
    ++mAt;
  }
}

}  // namespace Zelv::Infrastructure
