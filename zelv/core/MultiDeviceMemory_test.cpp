// The device branch when memory ends while it is made.

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "zelv/core/testing/MultiDeviceTest.h"

namespace {

/// Which allocation of this thread that may give null does; 0 for none.
thread_local int nullAt = 0;

}  // namespace

// For the whole program, as the language has it; without a wish it is what it was.
void* operator new(std::size_t aSize, std::nothrow_t const&) noexcept {
  if (nullAt > 0 && --nullAt == 0) {
    return nullptr;
  }
  try {
    return ::operator new(aSize);
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}

void operator delete(void* aMemory, std::nothrow_t const&) noexcept {
  ::operator delete(aMemory);
}

namespace Zelv {
namespace {

using MultiDeviceMemory = Testing::MultiDeviceTest;

TEST_F(MultiDeviceMemory, EachPartThatCannotBeMadeIsNamed) {
  set.directories.putReadOnly("Configuration.xml",
                              "<Configuration><ZelvDiscovery>true</ZelvDiscovery></Configuration>");
  char const* const texts[] = {
      "in MultiDevice::MultiDevice: Failed allocate HierarchicalDB for Devices DB!",
      "in MultiDevice::MultiDevice: Failed allocate HierarchicalDB for Configuration DB!",
      "in MultiDevice::MultiDevice: Failed allocate DiscoveryService!",
      "nothing thrown",
  };
  int nth = 0;
  for (char const* text : texts) {
    std::string const failure = failureOf([&] {
      nullAt = ++nth;
      make();
    });
    nullAt = 0;
    EXPECT_EQ(failure, text);
  }
}

}  // namespace
}  // namespace Zelv
