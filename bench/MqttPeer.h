#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bench/Process.h"
#include "bench/TemporaryDirectory.h"
#include "bench/TwoHosts.h"

struct mosquitto;

namespace Zelv::Bench {

/// One connection to a broker, on the thread that calls it.
class MqttClient {
 public:
  /// @throws std::runtime_error when the broker does not let it in.
  MqttClient(char const* aAddress, int aPort);
  MqttClient(MqttClient const&) = delete;
  MqttClient& operator=(MqttClient const&) = delete;
  ~MqttClient();

  /// Waits until it stands.
  void subscribe(char const* aTopic);

  bool publish(char const* aTopic, std::string const& aText);

  /// Takes in what has come, waiting for it. @return false when the broker is gone.
  bool wait();

  /// Takes in what has come.
  bool read();

  /// @return how many messages have come since the last call.
  int taken();

  int descriptor() const;

 private:
  mosquitto* mClient;
  int mMessages = 0;
  bool mSubscribed = false;
};

/// MQTT over TCP: a broker at the other host, and a program there that answers what is asked.
class MqttPeer {
 public:
  /// Messages of so many bytes.
  static constexpr int cSize = 600;

  explicit MqttPeer(TwoHosts const& aHosts);

  /// A question and its answer.
  bool ask();

  /// What the program at the other host does until its input ends.
  static int answer(char const* aAddress, int aPort, std::function<void()> const& aReady);

 private:
  friend class MqttFanOut;

  std::string const mText;
  TemporaryDirectory mDirectory;
  Process mBroker;
  std::unique_ptr<Process> mService;
  std::unique_ptr<MqttClient> mClient;
};

/// The same broker with many subscribers of one topic.
class MqttFanOut {
 public:
  MqttFanOut(TwoHosts const& aHosts, int aSubscribers);
  MqttFanOut(MqttFanOut const&) = delete;
  MqttFanOut& operator=(MqttFanOut const&) = delete;
  ~MqttFanOut();

  /// One message, until each has got it.
  bool publish();

 private:
  MqttPeer mPeer;
  std::vector<std::unique_ptr<MqttClient>> mSubscribers;
  int mPoll;
};

}  // namespace Zelv::Bench
