#include "bench/MqttPeer.h"

#ifdef BENCH_MQTT

#include <mosquitto.h>
#include <poll.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

#include "bench/FarEnd.h"

namespace Zelv::Bench {

namespace {

constexpr int cPort = 1883;
constexpr int cKeepAlive = 3600;
constexpr int cPatience = 20'000;

char const cAsked[] = "asked";
char const cAnswered[] = "answered";
char const cChanged[] = "changed";

std::string configuration() {
  return "listener " + std::to_string(cPort) + " " + TwoHosts::cThere +
         "\nallow_anonymous true\nset_tcp_nodelay true\nuser root\nlog_type none\n";
}

bool waitFor(int aDescriptor) {
  pollfd waits{aDescriptor, POLLIN, 0};
  return poll(&waits, 1, cPatience) == 1;
}

}  // namespace

MqttClient::MqttClient(char const* aAddress, int aPort) {
  mosquitto_lib_init();
  mClient = mosquitto_new(nullptr, true, this);
  mosquitto_int_option(mClient, MOSQ_OPT_TCP_NODELAY, 1);
  mosquitto_message_callback_set(mClient, [](mosquitto*, void* aSelf, mosquitto_message const*) {
    ++static_cast<MqttClient*>(aSelf)->mMessages;
  });
  mosquitto_subscribe_callback_set(mClient, [](mosquitto*, void* aSelf, int, int, int const*) {
    static_cast<MqttClient*>(aSelf)->mSubscribed = true;
  });
  if (mosquitto_connect(mClient, aAddress, aPort, cKeepAlive) != MOSQ_ERR_SUCCESS || !wait()) {
    throw std::runtime_error("the broker does not let us in");
  }
}

MqttClient::~MqttClient() {
  mosquitto_disconnect(mClient);
  mosquitto_destroy(mClient);
  mosquitto_lib_cleanup();
}

void MqttClient::subscribe(char const* aTopic) {
  mosquitto_subscribe(mClient, nullptr, aTopic, 0);
  while (!mSubscribed) {
    if (!wait()) {
      throw std::runtime_error("the broker does not let us subscribe");
    }
  }
}

bool MqttClient::publish(char const* aTopic, std::string const& aText) {
  return mosquitto_publish(mClient, nullptr, aTopic, static_cast<int>(aText.size()), aText.data(),
                           0, false) == MOSQ_ERR_SUCCESS;
}

bool MqttClient::wait() {
  return waitFor(descriptor()) && read();
}

bool MqttClient::read() {
  return mosquitto_loop_read(mClient, 1) == MOSQ_ERR_SUCCESS;
}

int MqttClient::taken() {
  return std::exchange(mMessages, 0);
}

int MqttClient::descriptor() const {
  return mosquitto_socket(mClient);
}

MqttPeer::MqttPeer(TwoHosts const& aHosts)
    : mText(cSize, 'x'),
      mBroker(aHosts, {BENCH_MOSQUITTO, "-c", mDirectory.put("mosquitto.conf", configuration())},
              Process::End::bySignal) {
  TwoHosts::waitForPort(TwoHosts::cThere, cPort);
  mService = std::make_unique<Process>(
      aHosts, FarEnd::command({FarEnd::cMqtt, std::to_string(cPort)}), Process::End::byInput);
  mService->line();
  mClient = std::make_unique<MqttClient>(TwoHosts::cThere, cPort);
  mClient->subscribe(cAnswered);
}

bool MqttPeer::ask() {
  bool well = mClient->publish(cAsked, mText);
  while (well && mClient->taken() == 0) {
    well = mClient->wait();
  }
  return well;
}

int MqttPeer::answer(char const* aAddress, int aPort, std::function<void()> const& aReady) {
  std::string const text(cSize, 'y');
  MqttClient client(aAddress, aPort);
  client.subscribe(cAsked);
  aReady();
  pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {client.descriptor(), POLLIN, 0}};
  while (poll(waits, 2, -1) > 0 && waits[0].revents == 0) {
    if (!client.read()) {
      return 1;
    }
    for (int count = client.taken(); count > 0; --count) {
      client.publish(cAnswered, text);
    }
  }
  return 0;
}

MqttFanOut::MqttFanOut(TwoHosts const& aHosts, int aSubscribers)
    : mPeer(aHosts), mPoll(epoll_create1(EPOLL_CLOEXEC)) {
  for (int number = 0; number < aSubscribers; ++number) {
    mSubscribers.push_back(std::make_unique<MqttClient>(TwoHosts::cThere, cPort));
    mSubscribers.back()->subscribe(cChanged);
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.ptr = mSubscribers.back().get();
    epoll_ctl(mPoll, EPOLL_CTL_ADD, mSubscribers.back()->descriptor(), &event);
  }
}

MqttFanOut::~MqttFanOut() {
  close(mPoll);
}

bool MqttFanOut::publish() {
  bool well = mPeer.mClient->publish(cChanged, mPeer.mText);
  for (int missing = static_cast<int>(mSubscribers.size()); well && missing > 0;) {
    epoll_event events[64];
    int const count = epoll_wait(mPoll, events, 64, cPatience);
    well = count > 0;
    for (int index = 0; index < count; ++index) {
      auto* const client = static_cast<MqttClient*>(events[index].data.ptr);
      well = client->read() && well;
      missing -= client->taken();
    }
  }
  return well;
}

}  // namespace Zelv::Bench

#endif
