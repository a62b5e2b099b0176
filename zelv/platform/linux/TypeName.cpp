#include "zelv/platform/TypeName.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace Zelv::Platform {

std::string TypeName::Of(std::string const& aName) {
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> const readable(
      abi::__cxa_demangle(aName.c_str(), nullptr, nullptr, &status), std::free);
  return status == 0 ? readable.get() : aName;
}

}  // namespace Zelv::Platform
