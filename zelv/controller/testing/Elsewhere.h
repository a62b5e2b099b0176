#pragma once

#include <functional>
#include <stdexcept>
#include <utility>

#include "zelv/platform/PCThread.h"

namespace Zelv::Controller::Testing {

/// Does something on a thread of its own, and waits for its end.
class Elsewhere : public virtual PCThread {
 public:
  explicit Elsewhere(std::function<void()> aWhat) : mWhat(std::move(aWhat)) {
    if (Create("elsewhere", 4096) == 0) {
      throw std::runtime_error("no thread");
    }
  }
  ~Elsewhere() override { Destroy(); }

 protected:
  void t_Main() override { mWhat(); }

 private:
  std::function<void()> mWhat;
};

}  // namespace Zelv::Controller::Testing
