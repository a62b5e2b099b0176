#pragma once

#include <tinyxml.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "zelv/infrastructure/XPathGate.h"
#include "zelv/infrastructure/XPathPlan.h"
#include "zelv/infrastructure/XPathResult.h"

namespace Zelv::Infrastructure {

/// One walk of a plan over a TinyXML tree. For one use by one thread.
///
/// Goes depth first, step by step, so that matches come in document order without being collected
/// in between. It looks at no more than a given number of nodes.
class XPathWalk {
 public:
  XPathWalk(XPathPlan const& aPlan, XPathResult& aResult,
            std::uint64_t aBudget = XPathGate::maximumCost)
      : mPlan(aPlan), mResult(aResult), mBudget(static_cast<std::int64_t>(aBudget)) {}

  /// Adds the matches to the result, which is empty before.
  /// @param aStart  where the first step begins: a document or one of its nodes.
  /// @return false if the budget did not suffice; the result is of no use then.
  bool run(TiXmlNode* aStart);

 private:
  struct Counts;

  void go(XPathStep const* aStep, TiXmlNode* aNode);
  void match(XPathStep const* aStep, TiXmlNode* aNode);
  void children(XPathStep const* aStep, TiXmlNode* aNode);
  void countedChildren(XPathStep const* aStep, TiXmlNode* aNode);
  void descendants(XPathStep const* aStep, TiXmlNode* aTop);
  void parent(XPathStep const* aStep, TiXmlNode* aNode);
  void attribute(XPathStep const* aStep, TiXmlNode* aNode);
  void leaves(TiXmlNode* aNode, bool aTextOnly);

  bool fits(XPathStep const* aStep, TiXmlNode const* aNode) const;
  bool passes(XPathStep const* aStep, TiXmlNode* aNode);
  bool passesCounted(XPathStep const* aStep, TiXmlNode* aNode, Counts& aCounts);
  bool holds(XPathTest const& aTest, TiXmlNode* aNode);
  bool holdsText(XPathTest const& aTest, TiXmlNode const* aNode);
  bool holdsChild(XPathTest const& aTest, TiXmlNode const* aNode);
  std::string const& stringValue(TiXmlNode const* aElement);
  void restoreDocumentOrder(TiXmlNode* aTop);

  bool isLast(XPathStep const* aStep) const {
    return aStep == mPlan.steps.data() + mPlan.stepCount - 1;
  }
  bool spend() { return --mBudget >= 0; }

  XPathPlan const& mPlan;
  XPathResult& mResult;
  std::int64_t mBudget;
  bool mOrdered = true;
  std::string mScratch;
  /// The node that each step upwards came to last: many children lead to one parent.
  TiXmlNode* mLastParents[XPathPlan::maximumSteps] = {};
};

}  // namespace Zelv::Infrastructure
