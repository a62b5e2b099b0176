// From nothing to the first answer of the tree, and the end in order. There is no peer to this.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <future>

#include "bench/Set.h"
#include "zelv/interfaces/InterfaceFactory.h"

namespace {

class FirstAnswer : public virtual Zelv::IBaseDataCallback {
 public:
  void onData(std::string const&, std::string const&, Zelv::ContextInformation const*,
              Zelv::GUID const&) override {
    mAnswer.set_value();
  }
  void onStatus(Zelv::StatusInformation const&, Zelv::GUID const&) override { mAnswer.set_value(); }

  void wait() { mAnswer.get_future().wait(); }

 private:
  std::promise<void> mAnswer;
};

void startToFirstAnswer(benchmark::State& aState) {
  Zelv::Bench::Set set;
  Zelv::InterfaceFactory::terminate();
  for (auto _ : aState) {
    FirstAnswer answer;
    auto* data =
        dynamic_cast<Zelv::IAppData*>(Zelv::InterfaceFactory::getInterface(Zelv::IID_IAppData));
    data->requestData("/Zelv/Configuration/UPnPDiscovery/text()", nullptr, &answer);
    answer.wait();
    aState.PauseTiming();
    Zelv::InterfaceFactory::terminate();
    aState.ResumeTiming();
  }
}

BENCHMARK(startToFirstAnswer)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
