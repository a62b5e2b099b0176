#pragma once

#include <string>

#include "bench/Process.h"
#include "bench/Set.h"
#include "bench/TwoHosts.h"

namespace Zelv::Bench {

/// A set here and one at the other host, which know each other.
class Home {
 public:
  /// By this name the set here knows the other one also as a phone: commands go to phones alone.
  static constexpr char const* cPhone = "phone";

  explicit Home(TwoHosts const& aHosts);

  IAppData* data() const { return mSet.data(); }

  /// The other set's own path, as it is read from here.
  std::string remote(std::string const& aPath) const;

  /// Something changes at the other set.
  void change() { mFar.say("change"); }

 private:
  void introducePhone() const;

  Set mSet;
  Process mFar;
  std::string const mFarId;
};

}  // namespace Zelv::Bench
