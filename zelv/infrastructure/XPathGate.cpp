#include "zelv/infrastructure/XPathGate.h"

#include <algorithm>

#include "zelv/infrastructure/XPathExtent.h"
#include "zelv/infrastructure/XPathScan.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Infrastructure {

namespace {

constexpr std::size_t stepsAtNoCharge = 16;

bool exceeds(char const* aWhat, std::size_t aCount, std::size_t aMaximum) {
  if (aCount <= aMaximum) {
    return false;
  }
  PCRealDebug::Print(PCRealDebug::Warning, "XPathGate::XPathGate: %zu %s refused, at most %zu.",
                     aCount, aWhat, aMaximum);
  return true;
}

// Products that no longer fit are over every limit.
std::uint64_t product(std::uint64_t aLeft, std::uint64_t aRight) {
  std::uint64_t result = 0;
  return __builtin_mul_overflow(aLeft, aRight, &result) ? UINT64_MAX : result;
}

bool changesMeaning(char aByte) {
  auto const byte = static_cast<unsigned char>(aByte);
  return byte < 0x20 || byte == 0x7F ||
         std::string_view("'\"[]<&").find(aByte) != std::string_view::npos;
}

}  // namespace

XPathGate::XPathGate(std::string_view aExpression) {
  if (exceeds("bytes", aExpression.size(), maximumLength)) {
    return;
  }
  XPathScan const scan(aExpression);
  mAdmitted = scan.isWellFormed() && !exceeds("predicates", scan.predicates(), maximumPredicates) &&
              !exceeds("nested predicates", scan.nesting(), maximumNesting) &&
              !exceeds("tokens", scan.tokens(), maximumTokens);
  mComparesNodes = scan.comparesNodes();
  mPathNesting = scan.pathNesting();
  mSteps = scan.steps();
  mLevelSteps = scan.levelSteps();
}

bool XPathGate::admits(XPathExtent const& aExtent) const {
  if (!mAdmitted) {
    return false;
  }
  std::uint64_t const cost = estimate(aExtent);
  if (cost <= maximumCost) {
    return true;
  }
  PCRealDebug::Print(
      PCRealDebug::Warning, "XPathGate::admits: estimated cost %llu refused, at most %llu.",
      static_cast<unsigned long long>(cost), static_cast<unsigned long long>(maximumCost));
  return false;
}

std::uint64_t XPathGate::estimate(XPathExtent const& aExtent) const {
  std::uint64_t cost = mLevelSteps > 1 ? std::max(aExtent.size, aExtent.levels) : aExtent.size;
  for (std::size_t times = mPathNesting + (mComparesNodes ? 1 : 0); times > 0; --times) {
    cost = product(cost, aExtent.size);
  }
  return product(cost, 1 + mSteps / stepsAtNoCharge);
}

bool XPathGate::isQuotableLiteral(std::string_view aText) {
  return aText.size() <= maximumLiteral && std::none_of(aText.begin(), aText.end(), changesMeaning);
}

}  // namespace Zelv::Infrastructure
