#include "apps/zelv-tv/Settling.h"

namespace ZelvTv {

namespace {

char const* const kAnyPath = "/Zelv/Configuration/ZelvDiscovery/text()";

}  // namespace

// The data worker runs its tasks in order. A read behind everything asked so far comes after the
// writes; those may have queued further reads for subscribers, and a second read comes after these.
void Settling::Begin() {
  mWrites.Request(mTree, kAnyPath, [this](std::string const* /*aValue*/) {
    mReadsAgain.Request(mTree, kAnyPath, [this](std::string const* /*aValue*/) {
      mTreeSettled = true;
      mEvents.Wake();
    });
  });
}

}  // namespace ZelvTv
