#pragma once

#include <cstddef>
#include <deque>
#include <memory>

#include "zelv/controller/CommandControllerTask.h"

namespace Zelv::Controller {

/// The tasks that wait for the thread of the command controller, first in, first out. Those that
/// the network made are bounded in number and size. Has no lock; its owner locks.
class CommandTasks {
 public:
  static constexpr std::size_t MaxFromNetwork = 16384;
  static constexpr std::size_t MaxBytesFromNetwork = std::size_t{64} * 1024 * 1024;

  void push(std::unique_ptr<CommandControllerTask> aTask);

  /// False, with the task gone, when too many wait.
  bool pushFromNetwork(std::unique_ptr<CommandControllerTask> aTask);

  /// Null when there is none.
  std::unique_ptr<CommandControllerTask> take();

  std::size_t size() const { return mEntries.size(); }
  void clear();

 private:
  struct Entry {
    std::unique_ptr<CommandControllerTask> mTask;
    bool mFromNetwork;
  };

  std::deque<Entry> mEntries;
  std::size_t mFromNetwork = 0;
  std::size_t mBytesFromNetwork = 0;
};

}  // namespace Zelv::Controller
