// A read of another set's tree, a command to it, and a change that a thousand subscriptions there
// wait for, each beside the same messages in plain system calls, and beside others who carry
// questions and answers. All of it between two processes with a network each.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/Arrivals.h"
#include "bench/BareExchange.h"
#include "bench/BusPeer.h"
#include "bench/FarEnd.h"
#include "bench/Home.h"
#include "bench/MqttPeer.h"
#include "bench/Reading.h"
#include "bench/TwoHosts.h"
#include "bench/WebPeer.h"
#include "zelv/controller/CommandEnvelope.h"
#include "zelv/controller/RemoteDataMessages.h"
#include "zelv/interfaces/IAppCommand.h"
#include "zelv/interfaces/InterfaceFactory.h"

namespace Zelv::Bench {

namespace {

using benchmark::State;

constexpr int cSubscribers = 1000;

char const cCommand[] = "<Echo><Text>Volume up, please.</Text></Echo>";

TwoHosts const* theHosts = nullptr;

/// What the messages of a question and its answer are long, with their line feeds.
struct Sizes {
  std::size_t question;
  std::size_t answer;
};

Sizes sizesOfRead() {
  Controller::RemoteDataMessages messages;
  messages.setLocalDeviceId(GUID::nullGUID.toString());
  messages.setServiceUrl(std::string("tcp://") + TwoHosts::cHere + ":4446/");
  return {messages.requestData(GUID::nullGUID, FarEnd::cPath).size() + 1,
          messages.onData(GUID::nullGUID, "false").size() + 1};
}

Sizes sizesOfCommand() {
  using Controller::CommandEnvelope;
  std::string const id = GUID::nullGUID.toString();
  std::string const replyTo = std::string("tcp://") + TwoHosts::cHere + ":4448/";
  return {CommandEnvelope::command(GUID::nullGUID, id, replyTo, cCommand).size() + 1,
          CommandEnvelope::reply(id, GUID::nullGUID, cCommand).size() + 1};
}

/// A message there, and one back from the thread that read it.
void bareExchanges(State& aState, Sizes const& aSizes) {
  Arrivals arrivals;
  BareListener const listener(FarEnd::cBarePort, [&] { arrivals.arrive(); });
  Process far(*theHosts, FarEnd::command({FarEnd::cBare, std::to_string(aSizes.answer)}),
              Process::End::byInput);
  far.line();
  sockaddr_in const there = addressOf(TwoHosts::cThere, FarEnd::cBarePort);
  std::string const question = std::string(aSizes.question - 1, 'x') + "\n";
  for (auto _ : aState) {
    if (!bareSend(there, question) || !arrivals.take()) {
      aState.SkipWithError("an exchange failed");
      break;
    }
  }
}

void bareRead(State& aState) {
  bareExchanges(aState, sizesOfRead());
}

void bareCommand(State& aState) {
  bareExchanges(aState, sizesOfCommand());
}

void remoteRead(State& aState) {
  Answer answer;
  Home const home(*theHosts);
  std::string const path = home.remote(FarEnd::cPath);
  Reading(home.data()).read(path);
  for (auto _ : aState) {
    home.data()->requestData(path, nullptr, &answer);
    if (!answer.take()) {
      aState.SkipWithError("a read failed");
      break;
    }
  }
}

class Return : public virtual IBaseCommandCallback {
 public:
  void onReturn(std::string const&, GUID const&) override { mArrivals.arrive(); }
  void onStatus(StatusInformation const&, GUID const&) override {}
  bool take() { return mArrivals.take(); }

 private:
  Arrivals mArrivals;
};

void commandAndReturn(State& aState) {
  Return callback;
  Home const home(*theHosts);
  auto* const commands =
      dynamic_cast<IAppCommand*>(InterfaceFactory::getInterface(IID_IAppCommand));
  bool well = true;
  auto const send = [&] {
    commands->executeCommand(cCommand, Home::cPhone, &callback);
    well = callback.take();
  };
  send();
  for (auto _ : aState) {
    send();
    if (!well) {
      aState.SkipWithError("a command failed");
      break;
    }
  }
}

/// A message for each of so many, one after another.
void bareFanOut(State& aState) {
  Arrivals arrivals;
  BareListener const listener(FarEnd::cBarePort, [&] { arrivals.arrive(); });
  Process far(*theHosts, FarEnd::command({FarEnd::cBare, std::to_string(sizesOfRead().answer)}),
              Process::End::byInput);
  far.line();
  for (auto _ : aState) {
    far.say("burst " + std::to_string(cSubscribers));
    if (!arrivals.take(cSubscribers)) {
      aState.SkipWithError("an exchange failed");
      break;
    }
  }
  aState.SetItemsProcessed(aState.iterations() * cSubscribers);
}

void remoteFanOut(State& aState) {
  Answer answer;
  Home home(*theHosts);
  std::string const path = home.remote(FarEnd::cPath);
  bool well = true;
  for (int number = 0; well && number < cSubscribers; ++number) {
    home.data()->subscribeData(path, nullptr, &answer);
    well = answer.take();
  }
  for (auto _ : aState) {
    home.change();
    well = well && answer.take(cSubscribers);
    if (!well) {
      aState.SkipWithError("a change is missed");
      break;
    }
  }
  aState.SetItemsProcessed(aState.iterations() * cSubscribers);
}

#ifdef BENCH_SDBUS
void dbusCallTcp(State& aState) {
  BusPeer peer(*theHosts);
  for (auto _ : aState) {
    if (!peer.call()) {
      aState.SkipWithError("a call failed");
      break;
    }
  }
}
#endif

#ifdef BENCH_MQTT
void mosquitto(State& aState) {
  MqttPeer peer(*theHosts);
  for (auto _ : aState) {
    if (!peer.ask()) {
      aState.SkipWithError("a question failed");
      break;
    }
  }
}

void mosquittoFanOut(State& aState) {
  MqttFanOut peer(*theHosts, cSubscribers);
  for (auto _ : aState) {
    if (!peer.publish()) {
      aState.SkipWithError("a message is missed");
      break;
    }
  }
  aState.SetItemsProcessed(aState.iterations() * cSubscribers);
}
#endif

#ifdef BENCH_NGINX
void nginxGet(State& aState) {
  WebPeer const peer(*theHosts);
  for (auto _ : aState) {
    if (!peer.get()) {
      aState.SkipWithError("a request failed");
      break;
    }
  }
}
#endif

BENCHMARK(bareRead)->UseRealTime();
BENCHMARK(remoteRead)->UseRealTime();
BENCHMARK(bareCommand)->UseRealTime();
BENCHMARK(commandAndReturn)->UseRealTime();
#ifdef BENCH_SDBUS
BENCHMARK(dbusCallTcp)->UseRealTime();
#endif
#ifdef BENCH_MQTT
BENCHMARK(mosquitto)->UseRealTime();
#endif
#ifdef BENCH_NGINX
BENCHMARK(nginxGet)->UseRealTime();
#endif
BENCHMARK(bareFanOut)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(remoteFanOut)->UseRealTime()->Unit(benchmark::kMillisecond);
#ifdef BENCH_MQTT
BENCHMARK(mosquittoFanOut)->UseRealTime()->Unit(benchmark::kMillisecond);
#endif

/// A thousand connections, on both sides of the broker.
void allowManyDescriptors() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

void runBenchmarks() {
  allowManyDescriptors();
  TwoHosts const hosts;
  theHosts = &hosts;
  benchmark::RunSpecifiedBenchmarks();
}

}  // namespace Zelv::Bench

int main(int aCount, char** aArguments) {
  using Zelv::Bench::FarEnd;
  if (aCount > 2 && std::string(aArguments[1]) == FarEnd::cFlag) {
    return FarEnd::run({aArguments + 2, aArguments + aCount});
  }
  benchmark::Initialize(&aCount, aArguments);
  Zelv::Bench::runBenchmarks();
  return 0;
}
