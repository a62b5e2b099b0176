#pragma once

namespace Zelv::Controller {

/// What a change means for one subscription.
enum class eDelivery {
  Direct,         ///< exactly its path: the new value at once, on the reporting thread
  ReRead,         ///< above or below its path: its own path is read again, on the data worker
  SkipRemote,     ///< it is on another device's data
  SkipOneTime,    ///< it is a request, not a subscription
  SkipExcluded,   ///< its subscriber is not to hear of this change
  SkipSibling,    ///< in an element of the same name with another ID
  SkipAttribute,  ///< a text changed, it is on an attribute
  SkipUnmatched,  ///< neither path begins with the other
  SkipNoChange,   ///< what changed is not in the tree: nobody hears of it
};

}  // namespace Zelv::Controller
