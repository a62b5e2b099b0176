// From requestData to onData beside a bare handoff between two threads and beside a D-Bus call.

#include <benchmark/benchmark.h>
#include <semaphore.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "bench/Set.h"

#ifdef BENCH_SDBUS
#include <systemd/sd-bus.h>
#endif

namespace {

class Semaphore {
 public:
  Semaphore() { sem_init(&mSemaphore, 0, 0); }
  ~Semaphore() { sem_destroy(&mSemaphore); }
  void give() { sem_post(&mSemaphore); }
  void take() {
    while (sem_wait(&mSemaphore) != 0) {
    }
  }

 private:
  sem_t mSemaphore;
};

/// The least that any queue with a worker does.
class BareWorker {
 public:
  BareWorker() : mThread([this] { work(); }) {}
  ~BareWorker() {
    post(nullptr);
    mThread.join();
  }

  void post(Semaphore* aAnswer) {
    {
      std::lock_guard lock(mMutex);
      mQueue.push_back(aAnswer);
    }
    mTasks.give();
  }

 private:
  void work() {
    for (;;) {
      mTasks.take();
      Semaphore* answer;
      {
        std::lock_guard lock(mMutex);
        answer = mQueue.front();
        mQueue.pop_front();
      }
      if (!answer) {
        return;
      }
      answer->give();
    }
  }

  std::mutex mMutex;
  std::deque<Semaphore*> mQueue;
  Semaphore mTasks;
  std::thread mThread;
};

void bareHandoff(benchmark::State& aState) {
  BareWorker worker;
  Semaphore answer;
  for (auto _ : aState) {
    worker.post(&answer);
    answer.take();
  }
}

class Answer : public virtual Zelv::IBaseDataCallback {
 public:
  void onData(std::string const&, std::string const&, Zelv::ContextInformation const*,
              Zelv::GUID const&) override {
    mSemaphore.give();
  }
  void onStatus(Zelv::StatusInformation const&, Zelv::GUID const&) override { mFailed = true; }

  void take() { mSemaphore.take(); }
  bool failed() const { return mFailed; }

 private:
  Semaphore mSemaphore;
  std::atomic<bool> mFailed{false};
};

void requestData(benchmark::State& aState) {
  Zelv::Bench::Set set;
  Answer answer;
  std::string const path = "/Zelv/Configuration/UPnPDiscovery/text()";
  for (auto _ : aState) {
    set.data()->requestData(path, nullptr, &answer);
    answer.take();
  }
  if (answer.failed()) {
    aState.SkipWithError("a read failed");
  }
}

#ifdef BENCH_SDBUS

/// A message bus of our own, on a socket in the temporary directory.
class PrivateBus {
 public:
  PrivateBus() {
    int ends[2];
    if (pipe(ends) != 0) {
      std::abort();
    }
    std::string const print = "--print-address=" + std::to_string(ends[1]);
    char const* const arguments[] = {"dbus-daemon", "--session", "--nofork", print.c_str(),
                                     nullptr};
    if (posix_spawnp(&mDaemon, "dbus-daemon", nullptr, nullptr, const_cast<char* const*>(arguments),
                     environ) != 0) {
      std::abort();
    }
    close(ends[1]);
    char letter;
    while (read(ends[0], &letter, 1) == 1 && letter != '\n') {
      mAddress += letter;
    }
    close(ends[0]);
  }
  ~PrivateBus() {
    kill(mDaemon, SIGTERM);
    waitpid(mDaemon, nullptr, 0);
  }

  sd_bus* connect() const {
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    sd_bus_set_address(bus, mAddress.c_str());
    sd_bus_set_bus_client(bus, 1);
    sd_bus_start(bus);
    return bus;
  }

 private:
  pid_t mDaemon = 0;
  std::string mAddress;
};

int answerCall(sd_bus_message* aCall, void*, sd_bus_error*) {
  return sd_bus_reply_method_return(aCall, "s", "false");
}

void dbusCall(benchmark::State& aState) {
  PrivateBus const daemon;
  std::atomic<bool> ready{false};
  std::atomic<bool> end{false};
  std::thread server([&] {
    sd_bus* bus = daemon.connect();
    sd_bus_add_object(bus, nullptr, "/bench", answerCall, nullptr);
    sd_bus_request_name(bus, "bench.Peer", 0);
    ready = true;
    while (!end) {
      while (sd_bus_process(bus, nullptr) > 0) {
      }
      sd_bus_wait(bus, 100000);
    }
    sd_bus_unref(bus);
  });
  while (!ready) {
    std::this_thread::yield();
  }
  sd_bus* bus = daemon.connect();
  for (auto _ : aState) {
    sd_bus_message* reply = nullptr;
    sd_bus_error error = SD_BUS_ERROR_NULL;
    if (sd_bus_call_method(bus, "bench.Peer", "/bench", "bench.Peer", "Get", &error, &reply, "s",
                           "/Zelv/Configuration/UPnPDiscovery/text()") < 0) {
      aState.SkipWithError(error.message);
      sd_bus_error_free(&error);
      break;
    }
    sd_bus_message_unref(reply);
  }
  end = true;
  server.join();
  sd_bus_unref(bus);
}
BENCHMARK(dbusCall)->UseRealTime();
#endif

BENCHMARK(bareHandoff)->UseRealTime();
BENCHMARK(requestData)->UseRealTime();

}  // namespace
