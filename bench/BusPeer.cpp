#include "bench/BusPeer.h"

#ifdef BENCH_SDBUS

#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <stdexcept>

#include "bench/FarEnd.h"

namespace Zelv::Bench {

namespace {

char const cName[] = "bench.Peer";

std::string configuration() {
  return std::string(
             "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
             "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
             "<busconfig><type>session</type><listen>tcp:family=ipv4,host=") +
         TwoHosts::cThere +
         "</listen><auth>ANONYMOUS</auth><allow_anonymous/><policy context='default'>"
         "<allow send_destination='*' eavesdrop='true'/><allow eavesdrop='true'/>"
         "<allow own='*'/></policy></busconfig>";
}

sd_bus* connectTo(std::string const& aAddress) {
  sd_bus* bus = nullptr;
  sd_bus_new(&bus);
  sd_bus_set_address(bus, aAddress.c_str());
  sd_bus_set_bus_client(bus, 1);
  sd_bus_set_anonymous(bus, 1);
  if (sd_bus_start(bus) < 0) {
    throw std::runtime_error("the bus does not let us in");
  }
  return bus;
}

int onCall(sd_bus_message* aCall, void* aText, sd_bus_error*) {
  return sd_bus_reply_method_return(aCall, "s", static_cast<std::string*>(aText)->c_str());
}

/// Until the standard input ends.
void serve(sd_bus* aBus) {
  pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {sd_bus_get_fd(aBus), POLLIN, 0}};
  while (waits[0].revents == 0) {
    while (sd_bus_process(aBus, nullptr) > 0) {
    }
    poll(waits, 2, -1);
  }
}

}  // namespace

BusPeer::BusPeer(TwoHosts const& aHosts)
    : mText(cSize, 'x'),
      mDaemon(aHosts,
              {BENCH_DBUS_DAEMON, "--config-file=" + mDirectory.put("bus.conf", configuration()),
               "--nofork", "--print-address=1"},
              Process::End::bySignal),
      mAddress(mDaemon.line()),
      mService(aHosts, FarEnd::command({FarEnd::cBus, mAddress}), Process::End::byInput) {
  mService.line();
  mBus = connectTo(mAddress);
}

BusPeer::~BusPeer() {
  sd_bus_unref(mBus);
}

bool BusPeer::call() {
  sd_bus_message* reply = nullptr;
  bool const answered = sd_bus_call_method(mBus, cName, "/bench", cName, "Get", nullptr, &reply,
                                           "s", mText.c_str()) >= 0;
  sd_bus_message_unref(reply);
  return answered;
}

int BusPeer::answer(std::string const& aAddress, std::function<void()> const& aReady) {
  std::string text(cSize, 'y');
  sd_bus* const bus = connectTo(aAddress);
  sd_bus_add_object(bus, nullptr, "/bench", onCall, &text);
  if (sd_bus_request_name(bus, cName, 0) < 0) {
    return 1;
  }
  aReady();
  serve(bus);
  sd_bus_unref(bus);
  return 0;
}

}  // namespace Zelv::Bench

#endif
