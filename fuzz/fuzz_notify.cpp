// Who hears of a change: a table of subscriptions and a change against the plain model, with and
// without anybody listening to the log.
//
// The first line is the change: one character that chooses what is excluded and whether the device
// knows itself, and the path. Each further line is a subscription: one character that chooses its
// subscriber and whether it is a request, and the path.

#include <sstream>
#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/controller/testing/DeliveryModel.h"
#include "zelv/controller/testing/DeliveryTrial.h"

using Zelv::Controller::Testing::DeliveryModel;
using Zelv::Controller::Testing::DeliveryTrial;
using Zelv::Fuzz::expectEqual;

namespace {

constexpr unsigned cSubscribers = 3;
constexpr int cMostSubscriptions = 64;

/// Takes the character in front of a line that says what the line is about.
unsigned takeChoice(std::string& aLine) {
  unsigned const choice = aLine.empty() ? 0 : static_cast<unsigned char>(aLine[0]);
  aLine.erase(0, 1);
  return choice;
}

std::string joined(DeliveryModel::Events const& aEvents) {
  std::string text;
  for (std::string const& event : aEvents) {
    text += event + "\n";
  }
  return text;
}

void compare(DeliveryTrial& aTrial, DeliveryModel::Change const& aChange) {
  auto const expected = DeliveryModel::run(aTrial.table, aTrial.device, aChange);
  expectEqual("with detail", joined(aTrial.notify(aChange, true)), joined(expected));
  std::string const quiet = joined(DeliveryModel::quiet(expected));
  expectEqual("without", joined(aTrial.notify(aChange, false)), quiet);
  expectEqual("without, again", joined(aTrial.notify(aChange, false)), quiet);
  aTrial.answer("read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  std::istringstream input(std::string(reinterpret_cast<char const*>(aData), aSize));
  std::string line;
  std::getline(input, line);
  unsigned const choice = takeChoice(line);
  DeliveryModel::Change const change{line, "value", choice % (cSubscribers + 1)};
  DeliveryTrial trial(cSubscribers,
                      choice & 4U ? "2cb63c08-01e0-41cd-950e-1566f18e0983" : std::string());
  for (int count = 0; count < cMostSubscriptions && std::getline(input, line); ++count) {
    unsigned const kind = takeChoice(line);
    trial.add(line, kind % (cSubscribers + 1), (kind & 4U) != 0);
  }
  compare(trial, change);
  trial.add(change.path, 1, false);
  compare(trial, change);
  trial.remove(trial.table.front().id);
  compare(trial, change);
  return 0;
}
