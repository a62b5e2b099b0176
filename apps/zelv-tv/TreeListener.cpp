#include "apps/zelv-tv/TreeListener.h"

#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

void TreeListener::onData(std::string const& aXPath, std::string const& aValue,
                          Zelv::ContextInformation const* /*aContext*/,
                          Zelv::GUID const& aTransactionID) {
  mEvents.Post("data " + aTransactionID.toString() + " " + ValueText::ToLine(aXPath) + " " +
               ValueText::ToLine(aValue));
  mQuestions.Answered(aTransactionID);
}

void TreeListener::onStatus(Zelv::StatusInformation const& aStatus,
                            Zelv::GUID const& aTransactionID) {
  std::string const& text = aStatus.getStatusText();
  mEvents.Post("failed " + aTransactionID.toString() +
               (text.empty() ? "" : " " + ValueText::ToLine(text)));
  mQuestions.Answered(aTransactionID);
}

void TreeListener::onTimer(std::string const& aTimerName, Zelv::GUID aTimerID) {
  mEvents.Post("fired " + aTimerID.toString() + " " + ValueText::ToLine(aTimerName));
  mTimers.destroyTimer(aTimerID, nullptr);
}

}  // namespace ZelvTv
