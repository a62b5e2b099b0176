// A heartbeat of a device that is known, beside the parsing of its text alone.

#include <benchmark/benchmark.h>
#include <tinyxml.h>

#include <cstddef>
#include <string>
#include <vector>

#include "bench/Documents.h"
#include "zelv/core/DiscoveryService.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/platform/PCRealDebug.h"

namespace {

using Zelv::Bench::Documents;
using DiscoveryService = Zelv::Core::DiscoveryService;

/// More than a receiver remembers, so that none is a duplicate when its turn comes again.
constexpr std::size_t cTexts = 5000;

std::string envelope(std::string const& aMessageId, std::string const& aBody) {
  return "<Envelope><Header><SenderID>" + Documents::deviceId(0) + "</SenderID><MessageID>" +
         aMessageId + "</MessageID><From>192.0.2.7</From></Header><Body>" + aBody +
         "</Body></Envelope>\n";
}

std::string service(std::string const& aName, std::string const& aUrl) {
  return "<Service><Name>" + aName + "</Name><URL>" + aUrl + "</URL></Service>";
}

std::string hello(int aDevice) {
  return envelope("", "<Hello><Device ID='" + Documents::deviceId(aDevice) +
                          "'><Name>Television</Name><Model>M</Model><Location>Living room"
                          "</Location><Type>TV</Type><Services>" +
                          service("DataControl", "tcp://192.0.2.7:4446/") +
                          service("TVControl", "tcp://192.0.2.7:4447/") +
                          service("CommandControl", "tcp://192.0.2.7:4448/") +
                          service("InputControl", "udp://192.0.2.7:4449/") +
                          service("AssetManagement", "http://192.0.2.7:4450/") +
                          "</Services></Device></Hello>");
}

/// Heartbeats of the devices in turn, each with a MessageID of its own.
std::vector<std::string> heartBeats(int aDevices) {
  std::vector<std::string> texts;
  for (std::size_t index = 0; index < cTexts; ++index) {
    int const number = static_cast<int>(index);
    texts.push_back(envelope(
        Documents::deviceId(1000000 + number),
        "<HeartBeat><Device ID='" + Documents::deviceId(number % aDevices) + "' /></HeartBeat>"));
  }
  return texts;
}

/// A service that has heard that many devices. It was not started, so it sends nothing.
class Listening {
 public:
  explicit Listening(int aDevices) : mService(nullptr) {
    PCRealDebug::Silence();
    for (int device = 0; device < aDevices; ++device) {
      mService.onMessage(hello(device), "");
    }
  }
  void hear(std::string const& aText) { mService.onMessage(aText, aText); }

 private:
  DiscoveryService mService;
};

void tinyXml(benchmark::State& aState) {
  std::vector<std::string> const texts = heartBeats(40);
  std::size_t next = 0;
  for (auto _ : aState) {
    TiXmlDocument tree;
    tree.Parse(texts[next].c_str(), nullptr, TIXML_ENCODING_UNKNOWN);
    benchmark::DoNotOptimize(tree.FirstChildElement());
    next = (next + 1) % cTexts;
  }
}

void loadFromString(benchmark::State& aState) {
  std::vector<std::string> const texts = heartBeats(40);
  std::size_t next = 0;
  for (auto _ : aState) {
    Zelv::Infrastructure::HierarchicalDB database;
    benchmark::DoNotOptimize(database.loadFromString(texts[next]));
    next = (next + 1) % cTexts;
  }
}

void heartBeat(benchmark::State& aState) {
  auto const devices = static_cast<int>(aState.range(0));
  Listening listening(devices);
  std::vector<std::string> const texts = heartBeats(devices);
  std::size_t next = 0;
  for (auto _ : aState) {
    listening.hear(texts[next]);
    next = (next + 1) % cTexts;
  }
}

/// The second and third copy of each message.
void copyOfHeartBeat(benchmark::State& aState) {
  Listening listening(40);
  std::string const text = heartBeats(40).front();
  for (auto _ : aState) {
    listening.hear(text);
  }
}

BENCHMARK(tinyXml);
BENCHMARK(loadFromString);
BENCHMARK(heartBeat)->ArgName("devices")->Arg(1)->Arg(40)->Arg(1000);
BENCHMARK(copyOfHeartBeat);

}  // namespace
