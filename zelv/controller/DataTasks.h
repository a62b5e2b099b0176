#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>

#include "zelv/controller/DataControllerTask.h"

namespace Zelv::Controller {

/// The tasks that wait for the data worker, first in, first out. Only when more than cMostAhead of
/// other devices' tasks wait do this device's own overtake them, and then each kind has its turn:
/// who writes faster than the storage takes it keeps nobody here waiting but himself.
///
/// Has no lock; its owner locks.
class DataTasks {
 public:
  /// More than any well-behaved device has waiting, and few enough to wait for.
  static constexpr std::size_t cMostAhead = 32;

  void push(std::unique_ptr<DataControllerTask> aTask, bool aForOthers);

  /// Null when there is none.
  std::unique_ptr<DataControllerTask> take();

  std::size_t size() const { return mOwn.size() + mOthers.size(); }
  void clear();

 private:
  struct Entry {
    std::unique_ptr<DataControllerTask> mTask;
    std::uint64_t mOrder;
  };
  using Queue = std::deque<Entry>;

  bool isOwnTurn() const;

  Queue mOwn;
  Queue mOthers;
  std::uint64_t mOrder = 0;
  /// The last one taken was an own one.
  bool mOwnWasLast = false;
};

}  // namespace Zelv::Controller
