#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "zelv/infrastructure/testing/LiteralText.h"

namespace Zelv::Controller::Testing {

/// Who hears of a change, told as plainly as it can be: the oracle that tests and the fuzz target
/// hold the subscription manager against.
class DeliveryModel {
 public:
  struct Subscription {
    std::string id;
    std::string path;
    bool oneTime;
    /// 0 is nobody.
    std::size_t subscriber;
  };

  struct Change {
    std::string path;
    std::string value;
    /// A subscriber, 0 for none. Nobody is excluded along with none.
    std::size_t excluded;
  };

  /// What is seen, in order: lines of the log, "told ID PATH VALUE" for a subscriber, and "read
  /// PATH" for a request to the tree.
  using Events = std::vector<std::string>;

  static Events run(std::vector<Subscription> aTable, std::string const& aDevice,
                    Change const& aChange) {
    if (aChange.path.substr(0, 5) != "/Zelv") {
      return {line("Invalid XPath '" + shown(aChange.path) + "', missing '/Zelv' prefix.")};
    }
    std::sort(aTable.begin(), aTable.end(),
              [](Subscription const& a, Subscription const& b) { return a.id < b.id; });
    Events events;
    for (Subscription const& subscription : aTable) {
      Events const more = one(subscription, aDevice, aChange);
      events.insert(events.end(), more.begin(), more.end());
    }
    return events;
  }

  /// What one subscription brings about.
  static Events one(Subscription const& aSubscription, std::string const& aDevice,
                    Change const& aChange) {
    using Literal = Infrastructure::Testing::LiteralText;
    std::string const& S = aSubscription.path;
    std::string const& C = aChange.path;
    if (!Literal::isLocalXPath(S, aDevice)) {
      return {line("Skipped subscription for remote data.")};
    }
    if (aSubscription.oneTime) {
      return {line("Skipped one time subscription (requestData).")};
    }
    if (aSubscription.subscriber == aChange.excluded) {
      return {line("Skipped remote data controller.")};
    }
    if (S == C) {
      if (aSubscription.subscriber == 0) {
        return {line("Found NULL IBaseDataCallback pointer!!!.")};
      }
      return {told(aSubscription, aChange.value)};
    }
    std::string qS;
    std::string qC;
    std::string const pS = Literal::firstPredicate(S, qS);
    std::string const pC = Literal::firstPredicate(C, qC);
    if (!pS.empty() && !pC.empty() && qS == qC && begins(pS, "@ID") && begins(pC, "@ID") &&
        pS != pC) {
      return {line("Skipped change in sibling node (different ID).")};
    }
    std::string const lastOfS = Literal::lastStep(S);
    if (Literal::lastStep(C) == "text()" && pS.empty() && !lastOfS.empty() && lastOfS[0] == '@') {
      return {line("Skipped subscription for unchanged attribute.")};
    }
    std::string const C2 = Literal::removePredicates(Literal::before(C, "/text()"));
    std::string const S2 =
        Literal::removePredicates(Literal::before(Literal::before(S, "/text()"), "/@"));
    if (!begins(C2, S2) && !begins(S2, C2)) {
      return {line("Skipped unmatched XPath.")};
    }
    return {line("requesting data for XPath '" + shown(S) + "'"), "read " + S};
  }

  static std::string told(Subscription const& aSubscription, std::string const& aValue) {
    return "told " + aSubscription.id + " " + aSubscription.path + " " + aValue;
  }

  static std::string line(std::string const& aText) {
    return "DataSubscriptionManager::notifySubscribers: " + aText;
  }

  /// Those of the events that there are without the lines of detail.
  static Events quiet(Events const& aEvents) {
    Events events;
    for (std::string const& event : aEvents) {
      if (!begins(event, line("Skipped ")) && !begins(event, line("requesting "))) {
        events.push_back(event);
      }
    }
    return events;
  }

 private:
  static bool begins(std::string const& aText, std::string const& aHead) {
    return aText.substr(0, aHead.size()) == aHead;
  }

  /// As the log shows a text: up to its first NUL, cut at 1,024 bytes.
  static std::string shown(std::string const& aText) {
    return aText.substr(0, aText.find('\0')).substr(0, 1024);
  }
};

}  // namespace Zelv::Controller::Testing
