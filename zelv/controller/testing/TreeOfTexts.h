#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>

#include "zelv/controller/DataController.h"
#include "zelv/interfaces/IDataProvider.h"

namespace Zelv::Controller::Testing {

/// A provider that holds one text for each path. Reads of other paths fail; writes make paths, and
/// tell the subscribers as providers do.
class TreeOfTexts : public virtual IDataProvider {
 public:
  /// @param aController  not used before the first write.
  explicit TreeOfTexts(DataController* aController) : mController(aController) {}

  /// Called at the beginning of each read, on the data worker. MUST NOT be changed while reads can
  /// come.
  std::function<void(std::string const& aXPath)> whenRead;

  void put(std::string const& aXPath, std::string const& aText) {
    std::lock_guard lock(mLock);
    mTexts[aXPath] = aText;
  }

  /// Empty also where there is none.
  std::string get(std::string const& aXPath) const {
    std::lock_guard lock(mLock);
    auto const text = mTexts.find(aXPath);
    return text == mTexts.end() ? "" : text->second;
  }

  bool has(std::string const& aXPath) const {
    std::lock_guard lock(mLock);
    return mTexts.contains(aXPath);
  }

  int getData(std::string const& aXPath, std::string& aData, GUID) override {
    if (whenRead) {
      whenRead(aXPath);
    }
    if (!has(aXPath)) {
      throw std::runtime_error("no such text");
    }
    aData = get(aXPath);
    return 0;
  }

  int setData(std::string const& aXPath, std::string const& aData, GUID aTransactionID) override {
    put(aXPath, aData);
    mController->notifyDataSubscribers(aXPath, aData, aTransactionID);
    return 0;
  }

  int addData(std::string const&, std::string const&, GUID) override { return -1; }
  int onSubscribe(std::string const&, GUID) override { return 0; }
  int onUnsubscribe(std::string const&, GUID) override { return 0; }

 private:
  DataController* mController;
  mutable std::mutex mLock;
  std::map<std::string, std::string> mTexts;
};

}  // namespace Zelv::Controller::Testing
