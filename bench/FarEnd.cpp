#include "bench/FarEnd.h"

#include <iostream>

#include "bench/Arrivals.h"
#include "bench/BareExchange.h"
#include "bench/BusPeer.h"
#include "bench/MqttPeer.h"
#include "bench/Reading.h"
#include "bench/Set.h"
#include "bench/TwoHosts.h"
#include "zelv/interfaces/CommandReturn.h"
#include "zelv/interfaces/IAppCommand.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/InterfaceFactory.h"

namespace Zelv::Bench {

namespace {

class Echo : public virtual IBaseCommandHandler {
 public:
  std::string onCommand(std::string const& aCommand, CommandArgs const& aArgs) override {
    CommandReturn::sendReturn(aCommand, aArgs);
    return "";
  }
};

void ready(std::string const& aLine) {
  std::cout << aLine << std::endl;
}

void reportChange(int aNumber) {
  auto* const data = dynamic_cast<ICoreData*>(InterfaceFactory::getInterface(IID_ICoreData));
  data->notifyDataSubscribers(FarEnd::cPath, std::to_string(aNumber), GUID::createGUID());
}

int runSet() {
  Set set(Reading::cLongInterval);
  Echo echo;
  auto* const commands =
      dynamic_cast<IAppCommand*>(InterfaceFactory::getInterface(IID_IAppCommand));
  GUID const handle = commands->registerCommandHandler("Echo", &echo);
  ready(Reading(set.data()).read("/Zelv/Devices/LocalTV/@ID"));
  std::string line;
  for (int number = 0; std::getline(std::cin, line); ++number) {
    reportChange(number);
  }
  commands->unregisterCommandHandler(handle);
  return 0;
}

int runBare(std::size_t aSize) {
  sockaddr_in const here = addressOf(TwoHosts::cHere, FarEnd::cBarePort);
  std::string const answer = std::string(aSize - 1, 'y') + "\n";
  BareListener const listener(FarEnd::cBarePort, [&] { bareSend(here, answer); });
  ready("ready");
  std::string word;
  int count = 0;
  while (std::cin >> word >> count) {
    for (int sent = 0; sent < count; ++sent) {
      bareSend(here, answer);
    }
  }
  return 0;
}

}  // namespace

int FarEnd::run(std::vector<std::string> const& aArguments) {
  std::string const& what = aArguments.at(0);
  if (what == cSet) {
    return runSet();
  }
  if (what == cBare) {
    return runBare(std::stoul(aArguments.at(1)));
  }
#ifdef BENCH_SDBUS
  if (what == cBus) {
    return BusPeer::answer(aArguments.at(1), [] { ready("ready"); });
  }
#endif
#ifdef BENCH_MQTT
  if (what == cMqtt) {
    return MqttPeer::answer(TwoHosts::cThere, std::stoi(aArguments.at(1)), [] { ready("ready"); });
  }
#endif
  return 1;
}

std::vector<std::string> FarEnd::command(std::vector<std::string> const& aArguments) {
  std::vector<std::string> command{"/proc/self/exe", cFlag};
  command.insert(command.end(), aArguments.begin(), aArguments.end());
  return command;
}

}  // namespace Zelv::Bench
