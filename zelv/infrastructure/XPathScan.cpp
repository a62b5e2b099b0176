#include "zelv/infrastructure/XPathScan.h"

#include <algorithm>
#include <initializer_list>

#include "zelv/infrastructure/XPathCharacter.h"

namespace Zelv::Infrastructure {

namespace {

bool isOneOf(std::string_view aName, std::initializer_list<std::string_view> aNames) {
  return std::find(aNames.begin(), aNames.end(), aName) != aNames.end();
}

bool isContinuation(unsigned char aByte) {
  return (aByte & 0xC0U) == 0x80U;
}

// The length of the UTF-8 sequence (RFC 3629, section 4) that aText begins with, or 0.
std::size_t sequence(std::string_view aText) {
  auto const byte = [aText](std::size_t aIndex) {
    return aIndex < aText.size() ? static_cast<unsigned char>(aText[aIndex]) : 0U;
  };
  unsigned const lead = byte(0);
  unsigned const next = byte(1);
  if (lead < 0x80) {
    return 1;
  }
  if (lead >= 0xC2 && lead <= 0xDF) {
    return isContinuation(next) ? 2 : 0;
  }
  if (lead >= 0xE0 && lead <= 0xEF) {
    bool const allowed = (lead != 0xE0 || next >= 0xA0) && (lead != 0xED || next < 0xA0);
    return allowed && isContinuation(next) && isContinuation(byte(2)) ? 3 : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    bool const allowed = (lead != 0xF0 || next >= 0x90) && (lead != 0xF4 || next < 0x90);
    return allowed && isContinuation(next) && isContinuation(byte(2)) && isContinuation(byte(3))
               ? 4
               : 0;
  }
  return 0;
}

bool isText(std::string_view aText) {
  std::size_t index = 0;
  while (index < aText.size()) {
    if (XPathCharacter::isPlain(aText[index])) {
      ++index;
      continue;
    }
    std::size_t const length = sequence(aText.substr(index));
    if (length < 2) {
      return false;
    }
    index += length;
  }
  return true;
}

}  // namespace

XPathScan::XPathScan(std::string_view aExpression) : mText(aExpression) {
  mWellFormed = isText(aExpression) && scan();
}

bool XPathScan::scan() {
  for (skipBlanks(); mAt < mText.size(); skipBlanks()) {
    if (!scanToken()) {
      return false;
    }
  }
  return mOpenCount == 0;
}

bool XPathScan::scanToken() {
  char const byte = at(mAt);
  switch (byte) {
    case '\'':
    case '"':
      return skipLiteral();
    case '(':
    case '[':
      return open(byte);
    case ')':
    case ']':
      return close(byte);
    case '/':
      slash();
      return true;
    case '.':
      dot();
      return true;
    case '*':
      star();
      return true;
    case '=':
    case '!':
    case '<':
    case '>':
      comparison();
      return true;
    case '@':
      ++mAt;
      add(Token::At);
      return true;
    default:
      break;
  }
  if (XPathCharacter::isNameStart(byte)) {
    name();
  } else if (XPathCharacter::isDigit(byte) ||
             (byte == '-' && mLast == Token::Comparison && XPathCharacter::isDigit(at(mAt + 1)))) {
    number();
  } else {
    // Unions and arithmetic; also bytes that begin nothing, which the parser will refuse.
    mComparesNodes = mComparesNodes || byte != ',';
    ++mAt;
    add(Token::Operator);
  }
  return true;
}

bool XPathScan::skipLiteral() {
  std::size_t const end = mText.find(mText[mAt], mAt + 1);
  if (end == std::string_view::npos) {
    return false;
  }
  mAt = end + 1;
  add(Token::Literal);
  return true;
}

bool XPathScan::open(char aBracket) {
  if (mOpenCount == maximumOpen) {
    // Deep enough for any limit on nesting; the rest is of no interest.
    mDeepestPredicate = maximumOpen;
    mOpenCount = 0;
    mAt = mText.size();
    return true;
  }
  mOpen[mOpenCount++] = aBracket;
  ++mAt;
  skipBlanks();
  if (aBracket == '[') {
    ++mPredicates;
    mDeepestPredicate = std::max(mDeepestPredicate, ++mPredicateDepth);
  } else if (at(mAt) != ')') {
    mComparesNodes = true;
  }
  add(Token::Open);
  return true;
}

bool XPathScan::close(char aBracket) {
  char const opening = aBracket == ']' ? '[' : '(';
  if (mOpenCount == 0 || mOpen[mOpenCount - 1] != opening) {
    return false;
  }
  --mOpenCount;
  mPredicateDepth -= aBracket == ']' ? 1 : 0;
  ++mAt;
  add(Token::Operand);
  return true;
}

void XPathScan::name() {
  std::size_t const begin = mAt;
  while (XPathCharacter::isNamePart(at(mAt))) {
    ++mAt;
  }
  if (at(mAt) == ':' && (at(mAt + 1) == '*' || XPathCharacter::isNamePart(at(mAt + 1)))) {
    ++mAt;
    mAt += at(mAt) == '*' ? 1 : 0;
    while (XPathCharacter::isNamePart(at(mAt))) {
      ++mAt;
    }
  }
  std::string_view const text = mText.substr(begin, mAt - begin);
  skipBlanks();
  if (isOperand(mLast)) {
    operatorName(text);
  } else if (at(mAt) == '(') {
    functionName(text);
  } else if (at(mAt) == ':' && at(mAt + 1) == ':') {
    mAt += 2;
    axisName(text);
  } else {
    addOperand();
  }
}

void XPathScan::operatorName(std::string_view aName) {
  mComparesNodes = mComparesNodes || !isOneOf(aName, {"and", "or"});
  add(Token::Operator);
}

// Arguments speak for themselves. Without any, these look at no node beyond the candidate.
void XPathScan::functionName(std::string_view aName) {
  std::size_t const inside = mText.find_first_not_of(" \t\r\n", mAt + 1);
  bool const hasArguments = inside != std::string_view::npos && mText[inside] != ')';
  if (!hasArguments &&
      !isOneOf(aName, {"position", "last", "true", "false", "name", "local-name"})) {
    path();
  }
  add(Token::Function);
}

void XPathScan::axisName(std::string_view aName) {
  if (isOneOf(aName, {"descendant", "descendant-or-self", "ancestor", "ancestor-or-self"})) {
    ++mLevelSteps;
  } else if (!isOneOf(aName, {"child", "parent", "self", "attribute"})) {
    mComparesNodes = true;
  }
  path();
  add(Token::Axis);
}

void XPathScan::number() {
  ++mAt;
  while (XPathCharacter::isDigit(at(mAt)) || at(mAt) == '.') {
    ++mAt;
  }
  add(Token::Literal);
}

void XPathScan::slash() {
  bool const two = at(mAt + 1) == '/';
  mAt += two ? 2 : 1;
  mLevelSteps += two ? 1 : 0;
  ++mSteps;
  path();
  add(Token::Operator);
}

void XPathScan::dot() {
  if (XPathCharacter::isDigit(at(mAt + 1))) {
    number();
    return;
  }
  mAt += at(mAt + 1) == '.' ? 2 : 1;
  addOperand();
}

void XPathScan::star() {
  ++mAt;
  if (isOperand(mLast)) {
    mComparesNodes = true;
    add(Token::Operator);
  } else {
    addOperand();
  }
}

void XPathScan::comparison() {
  mAt += at(mAt + 1) == '=' ? 2 : 1;
  bool const paths = mLast != Token::Literal;
  add(Token::Comparison);
  mComparisonOpen = paths;
}

void XPathScan::path() {
  mPathNesting = std::max(mPathNesting, mPredicateDepth);
}

void XPathScan::add(Token aToken) {
  mComparesNodes = mComparesNodes || (mComparisonOpen && aToken != Token::Literal);
  mComparisonOpen = false;
  mLast = aToken;
  ++mTokens;
}

void XPathScan::addOperand() {
  if (mLast != Token::At) {
    path();
  }
  add(Token::Operand);
}

void XPathScan::skipBlanks() {
  while (XPathCharacter::isBlank(at(mAt))) {
    ++mAt;
  }
}

}  // namespace Zelv::Infrastructure
