#include "zelv/infrastructure/XPathExpression.h"

#include <tinyxml.h>

#include <cstring>

#include "zelv/infrastructure/XPathExtent.h"
#include "zelv/infrastructure/XPathMirror.h"
#include "zelv/infrastructure/XPathParser.h"
#include "zelv/infrastructure/XPathPlan.h"
#include "zelv/infrastructure/XPathResult.h"
#include "zelv/infrastructure/XPathWalk.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Infrastructure {

namespace {

TiXmlDocument const* documentOf(TiXmlNode const* aNode) {
  while (aNode->Parent()) {
    aNode = aNode->Parent();
  }
  return aNode->ToDocument();
}

// Callers change and remove what they find; evaluation itself changes nothing.
TiXmlNode* changeable(TiXmlNode const* aNode) {
  return const_cast<TiXmlNode*>(aNode);
}

}  // namespace

XPathExpression::XPathExpression(std::string_view aText) : mLength(0), mGate(aText) {
  if (!mGate.admits()) {
    return;
  }
  mText = std::make_unique<char[]>(aText.size() + 1);
  mLength = aText.size();
  std::memcpy(mText.get(), aText.data(), mLength);
  mPlan = std::make_unique<XPathPlan>();
  if (!XPathParser(text(), *mPlan).parse()) {
    mPlan.reset();
  }
}

XPathExpression::XPathExpression(XPathExpression&&) noexcept = default;
XPathExpression& XPathExpression::operator=(XPathExpression&&) noexcept = default;
XPathExpression::~XPathExpression() = default;

bool XPathExpression::evaluate(TiXmlNode const* aContext, XPathResult& aResult) const {
  aResult.clear();
  if (!mText) {
    return false;
  }
  TiXmlDocument const* const document = aContext ? documentOf(aContext) : nullptr;
  if (!document) {
    return true;
  }
  if (mPlan) {
    return walk(mPlan->absolute ? document : aContext, aResult);
  }
  if (!mGate.admits(XPathExtent::of(*document))) {
    return false;
  }
  XPathMirror(*document).select(mText.get(), aContext, aResult);
  return true;
}

bool XPathExpression::walk(TiXmlNode const* aStart, XPathResult& aResult) const {
  if (!XPathWalk(*mPlan, aResult).run(changeable(aStart))) {
    PCRealDebug::Print(PCRealDebug::Warning,
                       "XPathExpression::evaluate: more than %llu nodes to look at, refused.",
                       static_cast<unsigned long long>(XPathGate::maximumCost));
    aResult.clear();
    return false;
  }
  return true;
}

}  // namespace Zelv::Infrastructure
