#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Zelv::Infrastructure {

struct XPathExtent;

/// Stands before every evaluation: expressions reach the system from its peers, so what one may
/// cost is bounded before anything is done with it.
///
/// An expression over a limit has no result, and a warning says so. One that is malformed (brackets
/// or quotes that do not pair, a control byte that is no white space, text that is no UTF-8) has no
/// result, in silence, as any other expression that cannot be parsed.
class XPathGate {
 public:
  static constexpr std::size_t maximumLength = 2048;    ///< bytes of an expression
  static constexpr std::size_t maximumPredicates = 16;  ///< predicates in all
  static constexpr std::size_t maximumNesting = 4;      ///< predicates within predicates
  static constexpr std::size_t maximumTokens = 512;     ///< of the grammar: they become recursion
  static constexpr std::uint64_t maximumCost = 10'000'000;
  static constexpr std::size_t maximumLiteral = 128;  ///< bytes, see isQuotableLiteral()

  /// Reads the expression once and logs the limit that it exceeds, if any.
  explicit XPathGate(std::string_view aExpression);

  /// Whether the expression may be parsed.
  bool admits() const { return mAdmitted; }

  /// Whether the expression may be given to the general engine on a document of this extent. The
  /// estimate is the size to the power of 1 + the nesting of paths inside predicates. What makes
  /// the engine compare nodes with each other (a union, arithmetic, an argument of a function, two
  /// paths compared, an axis to the side) counts like one more nesting; several steps through all
  /// levels count the levels; more than 16 steps count once more for each 16. Logs a refusal.
  bool admits(XPathExtent const& aExtent) const;

  /// Whether a text from outside may be put between quotes in an expression. One that holds a
  /// quote, a square bracket, "<", "&" or a control byte, or is longer than maximumLiteral, could
  /// change the meaning of the expression, or of what is stored under it: callers treat it as a
  /// text that matches nothing.
  static bool isQuotableLiteral(std::string_view aText);

 private:
  std::uint64_t estimate(XPathExtent const& aExtent) const;

  bool mAdmitted = false;
  bool mComparesNodes = false;
  std::size_t mPathNesting = 0;
  std::size_t mSteps = 0;
  std::size_t mLevelSteps = 0;
};

}  // namespace Zelv::Infrastructure
