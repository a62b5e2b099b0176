#include "zelv/platform/TestPlatform.h"

#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/TemporaryDirectories.h"

namespace Zelv::Platform::Testing {

void LetPass(int aMilliseconds) {
  Fake::FakeClock::Advance(aMilliseconds);
}

struct TestDirectories::Content {
  Fake::TemporaryDirectories directories;
};

TestDirectories::TestDirectories() : mContent(std::make_unique<Content>()) {}

TestDirectories::~TestDirectories() = default;

std::string const& TestDirectories::readOnly() const {
  return mContent->directories.readOnly();
}

std::string const& TestDirectories::writable() const {
  return mContent->directories.writable();
}

}  // namespace Zelv::Platform::Testing
