#include "zelv/core/MultiDeviceSources.h"

#include "zelv/infrastructure/MultiString.h"

namespace Zelv {

std::string MultiDeviceSources::read(std::list<IDataProvider*> const& aSources,
                                     std::string const& aXPath, GUID const& aTransactionID) {
  std::list<std::string> answers;
  for (IDataProvider* const source : aSources) {
    std::string answer;
    source->getData(aXPath, answer, aTransactionID);
    if (!answer.empty()) {
      answers.push_back(answer);
    }
  }
  return Infrastructure::MultiString::join(answers);
}

}  // namespace Zelv
