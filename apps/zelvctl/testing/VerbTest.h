#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>

#include "apps/zelvctl/Options.h"
#include "apps/zelvctl/testing/FakeSet.h"

namespace ZelvCtl {

/// Runs verbs against a set called "Kitchen".
class VerbTest : public testing::Test {
 protected:
  Options optionsFor(FakeSet& aSet) {
    Options options;
    options.device = "Kitchen";
    options.path = "/Zelv/A/text()";
    options.timeout = 20;
    options.address = "127.0.0.1";
    options.group = aSet.home().group();
    options.port = aSet.home().port();
    options.name = "Tom";
    options.id = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";
    return options;
  }

  /// @return what keeps the verb from its end; empty when nothing does.
  template <typename Verb>
  std::string run(Options const& aOptions) {
    try {
      Verb(aOptions, mStop.descriptor(), mOut).run();
      return "";
    } catch (std::runtime_error const& error) {
      return error.what();
    }
  }

  Bell mStop;
  std::ostringstream mOut;
};

}  // namespace ZelvCtl
