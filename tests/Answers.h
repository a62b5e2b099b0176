#pragma once

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "zelv/interfaces/IBaseDataCallback.h"

/// Collects what the tree answers, and waits for it, bounded.
class Answers : public Zelv::IBaseDataCallback {
 public:
  struct Answer {
    std::string path;
    std::string value;
    Zelv::ContextInformation const* context = nullptr;
    Zelv::GUID id;
    bool failed = false;
  };

  void onData(std::string const& aXPath, std::string const& aValue,
              Zelv::ContextInformation const* aContext, Zelv::GUID const& aTransactionID) override;
  void onStatus(Zelv::StatusInformation const& aStatus, Zelv::GUID const& aTransactionID) override;

  /// The next one in order; nothing when none comes for a long time.
  std::optional<Answer> next();

 private:
  void put(Answer aAnswer);

  std::mutex mLock;
  std::condition_variable mGrown;
  std::vector<Answer> mAnswers;
};
