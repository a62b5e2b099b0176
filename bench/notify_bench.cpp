// A change in the tree, with subscriptions on other paths and on its own.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "zelv/controller/DataSubscriptionManager.h"
#include "zelv/interfaces/IBaseDataCallback.h"
#include "zelv/platform/PCRealDebug.h"

#ifdef BENCH_SIGCPP
#include <sigc++/sigc++.h>
#endif
#ifdef BENCH_SIGNALS2
#include <boost/signals2.hpp>
#endif

namespace {

using Zelv::ContextInformation;
using Zelv::GUID;

class Counter : public virtual Zelv::IBaseDataCallback {
 public:
  void onData(std::string const&, std::string const& aValue, ContextInformation const*,
              GUID const&) override {
    mBytes += aValue.size();
  }
  void onStatus(Zelv::StatusInformation const&, GUID const&) override {}

  std::size_t mBytes = 0;
};

std::string const changed = "/Zelv/Configuration/UPnP/Ping/Interval/text()";
std::string const value = "10";

void perDelivery(benchmark::State& aState) {
  aState.counters["each"] =
      benchmark::Counter(double(aState.range(0)), benchmark::Counter::kIsIterationInvariantRate |
                                                      benchmark::Counter::kInvert);
}

// The table as it stands behind the data controller, without its lock.
void onOtherPaths(benchmark::State& aState, std::vector<std::string> const& aChanges) {
  PCRealDebug::Silence();
  Zelv::Controller::DataSubscriptionManager manager;
  Counter counter;
  for (int index = 0; index < aState.range(0); ++index) {
    manager.addSubscription("/Zelv/Users/User[@ID='" + std::to_string(index) + "']/Name/text()",
                            &counter, nullptr, false);
  }
  std::size_t next = 0;
  for (auto _ : aState) {
    manager.notifySubscribers(aChanges[next++ % aChanges.size()], value, nullptr);
  }
  if (counter.mBytes != 0) {
    aState.SkipWithError("a subscriber of another path was told");
  }
  perDelivery(aState);
}

void notifyOthersSamePath(benchmark::State& aState) {
  onOtherPaths(aState, {changed});
}

// So many paths that none is met again soon: nothing can be remembered from one to the next.
void notifyOthersFreshPaths(benchmark::State& aState) {
  std::vector<std::string> changes;
  for (int index = 0; index < 20000; ++index) {
    changes.push_back("/Zelv/Configuration/Entry" + std::to_string(index) + "/text()");
  }
  onOtherPaths(aState, changes);
}

void notifyOwnPath(benchmark::State& aState) {
  PCRealDebug::Silence();
  Zelv::Controller::DataSubscriptionManager manager;
  std::vector<std::unique_ptr<Counter>> counters;
  for (int index = 0; index < aState.range(0); ++index) {
    counters.push_back(std::make_unique<Counter>());
    manager.addSubscription(changed, counters.back().get(), nullptr, false);
  }
  for (auto _ : aState) {
    manager.notifySubscribers(changed, value, nullptr);
  }
  if (counters.back()->mBytes == 0) {
    aState.SkipWithError("a subscriber was not told");
  }
  perDelivery(aState);
}

void virtualCallLoop(benchmark::State& aState) {
  std::vector<std::unique_ptr<Counter>> counters;
  std::vector<Zelv::IBaseDataCallback*> callbacks;
  for (int index = 0; index < aState.range(0); ++index) {
    counters.push_back(std::make_unique<Counter>());
    callbacks.push_back(counters.back().get());
  }
  GUID const id;
  for (auto _ : aState) {
    for (Zelv::IBaseDataCallback* callback : callbacks) {
      callback->onData(changed, value, nullptr, id);
    }
    benchmark::ClobberMemory();
  }
  perDelivery(aState);
}

#ifdef BENCH_SIGCPP
void sigcpp(benchmark::State& aState) {
  std::vector<std::unique_ptr<Counter>> counters;
  sigc::signal<void, std::string const&, std::string const&, ContextInformation const*, GUID const&>
      signal;
  for (int index = 0; index < aState.range(0); ++index) {
    counters.push_back(std::make_unique<Counter>());
    signal.connect(sigc::mem_fun(*counters.back(), &Counter::onData));
  }
  GUID const id;
  for (auto _ : aState) {
    signal.emit(changed, value, nullptr, id);
  }
  perDelivery(aState);
}
BENCHMARK(sigcpp)->Arg(100);
#endif

#ifdef BENCH_SIGNALS2
void signals2(benchmark::State& aState) {
  std::vector<std::unique_ptr<Counter>> counters;
  boost::signals2::signal<void(std::string const&, std::string const&, ContextInformation const*,
                               GUID const&)>
      signal;
  for (int index = 0; index < aState.range(0); ++index) {
    counters.push_back(std::make_unique<Counter>());
    Counter* counter = counters.back().get();
    signal.connect([counter](std::string const& aPath, std::string const& aValue,
                             ContextInformation const* aContext,
                             GUID const& aId) { counter->onData(aPath, aValue, aContext, aId); });
  }
  GUID const id;
  for (auto _ : aState) {
    signal(changed, value, nullptr, id);
  }
  perDelivery(aState);
}
BENCHMARK(signals2)->Arg(100);
#endif

BENCHMARK(notifyOthersSamePath)->Arg(10)->Arg(1000)->Arg(10000);
BENCHMARK(notifyOthersFreshPaths)->Arg(10)->Arg(1000)->Arg(10000);
BENCHMARK(virtualCallLoop)->Arg(100);
BENCHMARK(notifyOwnPath)->Arg(100);

}  // namespace
