#include "zelv/platform/PCNetwork.h"

#include <arpa/inet.h>

std::uint16_t PCNetwork::Htons(std::uint16_t aValue) {
  return htons(aValue);
}
