#pragma once

#include <arpa/inet.h>

#include <string>

namespace ZelvCtl {

/// Addresses as four numbers with dots.
class Ipv4 {
 public:
  static bool isAddress(std::string const& aText) {
    in_addr address{};
    return ::inet_pton(AF_INET, aText.c_str(), &address) == 1;
  }
};

}  // namespace ZelvCtl
