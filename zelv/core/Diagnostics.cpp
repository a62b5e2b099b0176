#include "zelv/interfaces/Diagnostics.h"

#include "zelv/core/CoreDiagnosis.h"

namespace Zelv {

std::vector<Diagnostics::Explanation> Diagnostics::explain(std::string const& aXPath) {
  Core* const core = Core::requestCore();
  return core != nullptr ? CoreDiagnosis(*core).explain(aXPath) : std::vector<Explanation>();
}

std::optional<Diagnostics::Statistics> Diagnostics::statistics() {
  Core* const core = Core::requestCore();
  return core != nullptr ? std::optional(CoreDiagnosis(*core).statistics()) : std::nullopt;
}

char const* Diagnostics::reasonOf(Rule aRule) {
  switch (aRule) {
    case Rule::NoChange:
      return "not told: the changed path does not begin with /Zelv";
    case Rule::RemoteData:
      return "not told: it is on another device's data";
    case Rule::OneTime:
      return "not told: it is a request, which waits for its own answer";
    case Rule::Excluded:
      return "not told: its subscriber is left out of this change";
    case Rule::SamePath:
      return "told at once, with the new value: it is on exactly this path";
    case Rule::Sibling:
      return "not told: it is in an element of another ID";
    case Rule::Attribute:
      return "not told: a text changed, and it is on an attribute";
    case Rule::Unmatched:
      return "not told: neither path lies below the other";
    case Rule::Nested:
      return "told later, with what its own path then holds: one path lies below the other";
  }
  return "";
}

}  // namespace Zelv
