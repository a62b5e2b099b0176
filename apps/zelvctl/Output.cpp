#include "apps/zelvctl/Output.h"

#include <nlohmann/json.hpp>

namespace ZelvCtl {

void Output::print(std::string const& aText) {
  std::lock_guard const lock(mLock);
  mOut << aText << std::flush;
  if (!mOut) {
    mBroken = true;
  }
}

void Output::print(nlohmann::json const& aJson) {
  print(aJson.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n");
}

}  // namespace ZelvCtl
