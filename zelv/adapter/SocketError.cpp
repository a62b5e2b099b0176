#include "zelv/adapter/SocketError.h"

#include <system_error>

namespace Zelv::Adapter {

std::string socketErrorText(int aErrno) {
  return std::generic_category().message(aErrno);
}

}  // namespace Zelv::Adapter
