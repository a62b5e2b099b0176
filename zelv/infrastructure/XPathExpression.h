#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "zelv/infrastructure/XPathGate.h"

class TiXmlNode;

namespace Zelv::Infrastructure {

struct XPathPlan;
class XPathResult;

/// An XPath 1.0 expression over TinyXML trees, parsed once and evaluated as often as needed.
///
/// Expressions made of the common steps are walked on the tree; all others are evaluated by a
/// general engine over a copy of the document. Both give the same nodes in the same order. Names
/// with a prefix are compared as they stand: namespaces are not resolved.
///
/// Nothing here throws for a bad expression: one that cannot be parsed, is no path, or exceeds a
/// limit of XPathGate has no result.
///
/// Threads: a constant object may be used by several at once; the tree must not change meanwhile.
class XPathExpression {
 public:
  /// Copies the text.
  explicit XPathExpression(std::string_view aText);
  XPathExpression(XPathExpression&&) noexcept;
  XPathExpression& operator=(XPathExpression&&) noexcept;
  ~XPathExpression();

  /// The text as it was given; empty if the gate refused it.
  std::string_view text() const { return {mText.get(), mLength}; }

  /// Whether the expression is walked directly, without a copy of the document.
  bool isDirect() const { return mPlan != nullptr; }

  /// Clears aResult and fills it with the matches. Absolute expressions begin at the document that
  /// aContext belongs to, others at aContext itself.
  /// @param aContext  a node of a document, or a document; for any other, and for null, there is
  ///                  no result. The result refers to its tree.
  /// @return false when a limit refused the evaluation; what there is at the path is then not
  /// known.
  bool evaluate(TiXmlNode const* aContext, XPathResult& aResult) const;

 private:
  bool walk(TiXmlNode const* aStart, XPathResult& aResult) const;

  /// Ends in a NUL. Never moves: the plan's names are views of it.
  std::unique_ptr<char[]> mText;
  std::size_t mLength;
  XPathGate mGate;
  std::unique_ptr<XPathPlan> mPlan;
};

}  // namespace Zelv::Infrastructure
