#include "zelv/controller/DataTasks.h"

#include <utility>

namespace Zelv::Controller {

void DataTasks::push(std::unique_ptr<DataControllerTask> aTask, bool aForOthers) {
  (aForOthers ? mOthers : mOwn).push_back({std::move(aTask), mOrder++});
}

std::unique_ptr<DataControllerTask> DataTasks::take() {
  mOwnWasLast = isOwnTurn();
  Queue& queue = mOwnWasLast ? mOwn : mOthers;
  if (queue.empty()) {
    return nullptr;
  }
  std::unique_ptr<DataControllerTask> task = std::move(queue.front().mTask);
  queue.pop_front();
  return task;
}

bool DataTasks::isOwnTurn() const {
  if (mOwn.empty() || mOthers.empty()) {
    return mOthers.empty();
  }
  if (mOthers.size() > cMostAhead) {
    return !mOwnWasLast;
  }
  return mOwn.front().mOrder < mOthers.front().mOrder;
}

void DataTasks::clear() {
  mOwn.clear();
  mOthers.clear();
}

}  // namespace Zelv::Controller
