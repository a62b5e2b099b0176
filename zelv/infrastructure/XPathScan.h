#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Zelv::Infrastructure {

/// What the gate has to know of an expression, gathered in one pass without parsing it.
class XPathScan {
 public:
  explicit XPathScan(std::string_view aExpression);

  /// Brackets and quotes pair, and nothing stands in the text that no expression holds.
  bool isWellFormed() const { return mWellFormed; }

  std::size_t predicates() const { return mPredicates; }
  std::size_t nesting() const { return mDeepestPredicate; }
  std::size_t tokens() const { return mTokens; }

  /// The deepest predicate that holds a path; attributes of the candidate itself do not count.
  std::size_t pathNesting() const { return mPathNesting; }
  std::size_t steps() const { return mSteps; }

  /// Steps along an axis that goes through all levels.
  std::size_t levelSteps() const { return mLevelSteps; }

  /// Whether an engine may have to compare nodes with each other: to order them, or pair by pair.
  bool comparesNodes() const { return mComparesNodes; }

 private:
  enum class Token : std::uint8_t {
    None,
    Operand,  ///< what ends a path or an expression
    Literal,
    At,
    Axis,
    Function,
    Open,
    Comparison,
    Operator
  };

  static constexpr std::size_t maximumOpen = 64;

  bool scan();
  bool scanToken();
  bool skipLiteral();
  bool open(char aBracket);
  bool close(char aBracket);
  void name();
  void operatorName(std::string_view aName);
  void functionName(std::string_view aName);
  void axisName(std::string_view aName);
  void number();
  void slash();
  void dot();
  void star();
  void comparison();
  void path();
  void add(Token aToken);
  void addOperand();
  void skipBlanks();
  bool isOperand(Token aToken) const {
    return aToken == Token::Operand || aToken == Token::Literal;
  }
  char at(std::size_t aIndex) const { return aIndex < mText.size() ? mText[aIndex] : '\0'; }

  std::string_view mText;
  std::size_t mAt = 0;
  Token mLast = Token::None;
  bool mComparisonOpen = false;  ///< a comparison whose left side is no literal came just before
  char mOpen[maximumOpen] = {};
  std::size_t mOpenCount = 0;
  std::size_t mPredicateDepth = 0;

  bool mWellFormed = false;
  bool mComparesNodes = false;
  std::size_t mPredicates = 0;
  std::size_t mDeepestPredicate = 0;
  std::size_t mTokens = 0;
  std::size_t mPathNesting = 0;
  std::size_t mSteps = 0;
  std::size_t mLevelSteps = 0;
};

}  // namespace Zelv::Infrastructure
