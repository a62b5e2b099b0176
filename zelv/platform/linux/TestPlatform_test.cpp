#include "zelv/platform/TestPlatform.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "zelv/platform/Directories.h"
#include "zelv/platform/PCAlarm.h"

namespace Zelv::Platform::Testing {

// Alarms go off in the order of their deadlines, so that this one going off shows that all earlier
// ones did.
void LetPass(int aMilliseconds) {
  Event passed;
  PCAlarm alarm;
  ASSERT_TRUE(alarm.Create(nullptr, static_cast<unsigned>(aMilliseconds), 1));
  alarm.SetEventCallback(
      0,
      [](PTEvent const*, void const* aPassed) {
        static_cast<Event*>(const_cast<void*>(aPassed))->happen();
        return true;
      },
      nullptr, &passed);
  EXPECT_TRUE(passed.wait());
}

struct TestDirectories::Content {
  std::string root;
  std::string readOnly;
  std::string writable;
};

TestDirectories::TestDirectories() : mContent(std::make_unique<Content>()) {
  mContent->root = "/tmp/zelv-XXXXXX";
  if (::mkdtemp(mContent->root.data()) == nullptr) {
    throw std::runtime_error("no place for the test's directories");
  }
  mContent->readOnly = mContent->root + "/factory/";
  mContent->writable = mContent->root + "/state/";
  std::filesystem::create_directory(mContent->readOnly);
  std::filesystem::create_directory(mContent->writable);
  Directories::Set(mContent->readOnly, mContent->writable);
}

TestDirectories::~TestDirectories() {
  Directories::Set("/mtd_appdata/Images_960x540/Quorl/", "/mtd_rwarea/kor_config_data/");
  std::error_code ignored;
  std::filesystem::remove_all(mContent->root, ignored);
}

std::string const& TestDirectories::readOnly() const {
  return mContent->readOnly;
}

std::string const& TestDirectories::writable() const {
  return mContent->writable;
}

}  // namespace Zelv::Platform::Testing
