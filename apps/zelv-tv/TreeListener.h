#pragma once

#include <string>

#include "apps/zelv-tv/EventQueue.h"
#include "apps/zelv-tv/OpenQuestions.h"
#include "zelv/Zelv.h"

namespace ZelvTv {

/// Turns what the tree and its timers report into lines.
class TreeListener : public virtual Zelv::IBaseDataCallback,
                     public virtual Zelv::IBaseTimerCallback {
 public:
  /// @param aQuestions  is told of each answer.
  /// @param aTimers     destroys each timer once it has gone off.
  TreeListener(EventQueue& aEvents, OpenQuestions& aQuestions, Zelv::IAppTimer& aTimers)
      : mEvents(aEvents), mQuestions(aQuestions), mTimers(aTimers) {}

  /// "data ID PATH VALUE"
  void onData(std::string const& aXPath, std::string const& aValue,
              Zelv::ContextInformation const* aContext, Zelv::GUID const& aTransactionID) override;

  /// "failed ID", with the status text behind it where there is one.
  void onStatus(Zelv::StatusInformation const& aStatus, Zelv::GUID const& aTransactionID) override;

  /// "fired ID NAME"
  void onTimer(std::string const& aTimerName, Zelv::GUID aTimerID) override;

 private:
  EventQueue& mEvents;
  OpenQuestions& mQuestions;
  Zelv::IAppTimer& mTimers;
};

}  // namespace ZelvTv
