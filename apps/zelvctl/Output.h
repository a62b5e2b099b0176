#pragma once

#include <atomic>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <ostream>
#include <string>

namespace ZelvCtl {

/// Where results go, written out at once. From any thread.
class Output {
 public:
  /// @param aOut  outlives the object.
  explicit Output(std::ostream& aOut) : mOut(aOut) {}

  void print(std::string const& aText);

  /// On one line. A text that is no UTF-8 is shown with marks in the places that are none, rather
  /// than not at all.
  void print(nlohmann::json const& aJson);

  /// True once something could not be written, as when nobody reads any more.
  bool isBroken() const { return mBroken; }

 private:
  std::ostream& mOut;
  std::mutex mLock;
  std::atomic<bool> mBroken = false;
};

}  // namespace ZelvCtl
