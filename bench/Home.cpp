#include "bench/Home.h"

#include <sys/socket.h>
#include <unistd.h>

#include "bench/BareExchange.h"
#include "bench/FarEnd.h"
#include "bench/Reading.h"

namespace Zelv::Bench {

namespace {

constexpr std::uint16_t cDataPort = 4446;
constexpr std::uint16_t cCommandPort = 4448;
constexpr std::uint16_t cDiscoveryPort = 4451;

std::string hello() {
  return std::string("<Envelope><Header><SenderID>") + Home::cPhone +
         "</SenderID><MessageID>6ba7b810-9dad-11d1-80b4-00c04fd430c8</MessageID><From>" +
         TwoHosts::cThere + "</From></Header><Body><Hello><Device ID='" + Home::cPhone +
         "'><Name>Phone</Name><Model>M</Model><Type>MOBILE</Type><Services><Service>"
         "<Name>CommandControl</Name><URL>tcp://" +
         TwoHosts::cThere + ":" + std::to_string(cCommandPort) +
         "</URL></Service></Services></Device></Hello></Body></Envelope>\n";
}

}  // namespace

Home::Home(TwoHosts const& aHosts)
    : mSet(Reading::cLongInterval),
      mFar(aHosts, FarEnd::command({FarEnd::cSet}), Process::End::byInput),
      mFarId(mFar.line()) {
  for (char const* address : {TwoHosts::cHere, TwoHosts::cThere}) {
    TwoHosts::waitForPort(address, cDataPort);
    TwoHosts::waitForPort(address, cCommandPort);
  }
  Reading tree(mSet.data());
  // In this order: when the list of phones changes, queues to others than phones end.
  introducePhone();
  tree.waitFor("/Zelv/Devices/Mobile/@ID", cPhone);
  tree.waitFor("/Zelv/Devices/RemoteTV/@ID", mFarId);
}

void Home::introducePhone() const {
  std::string const text = hello();
  sockaddr_in const address = addressOf(TwoHosts::cHere, cDiscoveryPort);
  int const sender = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sendto(sender, text.data(), text.size(), 0, reinterpret_cast<sockaddr const*>(&address),
         sizeof address);
  close(sender);
}

std::string Home::remote(std::string const& aPath) const {
  return "/Zelv[@DeviceId='" + mFarId + "']" + aPath.substr(sizeof "/Zelv" - 1);
}

}  // namespace Zelv::Bench
