// The order of virtual operations is part of the binary interface: programs built against an older
// header call by position. These tests read the positions out of pointers to members, as the
// Itanium C++ ABI, 2.3, lays them down (https://itanium-cxx-abi.github.io/cxx-abi/abi.html).

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "zelv/interfaces/IAppCommand.h"
#include "zelv/interfaces/IAppData.h"
#include "zelv/interfaces/IAppEnvironment.h"
#include "zelv/interfaces/IAppLifetime.h"
#include "zelv/interfaces/IAppTimer.h"
#include "zelv/interfaces/IAppUser.h"
#include "zelv/interfaces/IAssetProvider.h"
#include "zelv/interfaces/ICoreCommand.h"
#include "zelv/interfaces/ICoreCommandCallback.h"
#include "zelv/interfaces/ICoreData.h"
#include "zelv/interfaces/ICoreDataCallback.h"
#include "zelv/interfaces/ICoreEnvironment.h"
#include "zelv/interfaces/ICoreLifetime.h"
#include "zelv/interfaces/ICoreLifetimeCallback.h"
#include "zelv/interfaces/ICoreTimer.h"
#include "zelv/interfaces/ICoreTimerCallback.h"
#include "zelv/interfaces/ICoreUser.h"
#include "zelv/interfaces/ICoreUserCallback.h"
#include "zelv/interfaces/IDataProvider.h"
#include "zelv/interfaces/NetworkMessageCallback.h"

namespace Zelv {
namespace {

/// The place of a virtual operation in its interface's table, from 0; a destructor takes two
/// places.
template <typename Member>
std::ptrdiff_t slotOf(Member aMember) {
  std::ptrdiff_t parts[2] = {-1, -1};
  static_assert(sizeof(aMember) == sizeof(parts));
  std::memcpy(parts, &aMember, sizeof(parts));
#if defined(__arm__) || defined(__aarch64__)
  std::ptrdiff_t const offset = (parts[1] & 1) != 0 ? parts[0] : -1;
#else
  std::ptrdiff_t const offset = (parts[0] & 1) != 0 ? parts[0] - 1 : -1;
#endif
  constexpr std::ptrdiff_t cSlot = sizeof(void*);
  return offset < 0 ? -1 : offset / cSlot;
}

/// Adds one operation behind those of an interface, whose place shows how long the interface's
/// table is.
template <typename Interface>
class After : public Interface {
 public:
  virtual void behind() = 0;

 protected:
  // Overrides one in most of the interfaces, but not in all.
  // NOLINTNEXTLINE(modernize-use-override)
  ~After() = default;
};

template <typename Interface>
std::ptrdiff_t slots() {
  return slotOf(&After<Interface>::behind);
}

TEST(SlotOrder, OfIBase) {
  EXPECT_EQ(slotOf(&IBase::getName), 0);
  EXPECT_EQ(slotOf(&IBase::setName), 1);
  EXPECT_EQ(slots<IBase>(), 4);
}

TEST(SlotOrder, OfTheDataInterfaces) {
  EXPECT_EQ(slotOf(&IBaseData::setData), 0);
  EXPECT_EQ(slotOf(&IBaseData::addData), 1);
  EXPECT_EQ(slotOf(&IBaseData::requestData), 2);
  EXPECT_EQ(slotOf(&IBaseData::subscribeData), 3);
  EXPECT_EQ(slotOf(&IBaseData::unsubscribeData), 4);
  EXPECT_EQ(slots<IBaseData>(), 7);
  EXPECT_EQ(slots<IAppData>(), 7);
  EXPECT_EQ(slotOf(&ICoreData::registerDataProvider), 7);
  EXPECT_EQ(slotOf(&ICoreData::unregisterDataProvider), 8);
  EXPECT_EQ(slotOf(&ICoreData::unsubscribeForAllData), 9);
  EXPECT_EQ(slotOf(&ICoreData::updateSubscriberStatus), 10);
  EXPECT_EQ(slotOf(&ICoreData::notifyDataSubscribers), 11);
  EXPECT_EQ(slotOf(&ICoreData::notifyDataSubscriber), 12);
  EXPECT_EQ(slots<ICoreData>(), 13);
}

TEST(SlotOrder, OfTheTimerInterfaces) {
  EXPECT_EQ(slotOf(&IBaseTimer::createTimer), 0);
  EXPECT_EQ(slotOf(&IBaseTimer::destroyTimer), 1);
  EXPECT_EQ(slotOf(&IBaseTimer::resetTimer), 2);
  EXPECT_EQ(slots<IBaseTimer>(), 5);
  EXPECT_EQ(slots<IAppTimer>(), 5);
  EXPECT_EQ(slots<ICoreTimer>(), 5);
}

TEST(SlotOrder, OfTheUserInterfaces) {
  EXPECT_EQ(slotOf(&IBaseUser::subscribeUser), 0);
  EXPECT_EQ(slotOf(&IBaseUser::unsubscribeUser), 1);
  EXPECT_EQ(slots<IBaseUser>(), 4);
  EXPECT_EQ(slots<IAppUser>(), 4);
  EXPECT_EQ(slots<ICoreUser>(), 4);
}

TEST(SlotOrder, OfTheLifetimeInterfaces) {
  EXPECT_EQ(slotOf(&IBaseLifetime::setLifetimeState), 0);
  EXPECT_EQ(slots<IBaseLifetime>(), 3);
  EXPECT_EQ(slots<IAppLifetime>(), 3);
  EXPECT_EQ(slots<ICoreLifetime>(), 3);
}

TEST(SlotOrder, OfTheCommandInterfaces) {
  EXPECT_EQ(slotOf(&IBaseCommand::executeCommand), 0);
  EXPECT_EQ(slotOf(&IBaseCommand::discardCommandCallback), 1);
  EXPECT_EQ(slotOf(&IBaseCommand::registerCommandHandler), 2);
  EXPECT_EQ(slotOf(&IBaseCommand::unregisterCommandHandler), 3);
  EXPECT_EQ(slots<IBaseCommand>(), 6);
  EXPECT_EQ(slots<IAppCommand>(), 6);
  EXPECT_EQ(slots<ICoreCommand>(), 6);
}

TEST(SlotOrder, OfTheEnvironmentInterfaces) {
  EXPECT_EQ(slotOf(&IBaseEnvironment::registerComponent), 0);
  EXPECT_EQ(slotOf(&IBaseEnvironment::unregisterComponent), 1);
  EXPECT_EQ(slotOf(&IBaseEnvironment::getRegisteredComponents), 2);
  EXPECT_EQ(slotOf(&IBaseEnvironment::getComponent), 3);
  EXPECT_EQ(slots<IBaseEnvironment>(), 6);
  EXPECT_EQ(slots<IAppEnvironment>(), 6);
  EXPECT_EQ(slots<ICoreEnvironment>(), 6);
}

TEST(SlotOrder, OfProvidersAndReceivers) {
  EXPECT_EQ(slotOf(&IDataProvider::getData), 0);
  EXPECT_EQ(slotOf(&IDataProvider::setData), 1);
  EXPECT_EQ(slotOf(&IDataProvider::addData), 2);
  EXPECT_EQ(slotOf(&IDataProvider::onSubscribe), 3);
  EXPECT_EQ(slotOf(&IDataProvider::onUnsubscribe), 4);
  EXPECT_EQ(slots<IDataProvider>(), 7);
  EXPECT_EQ(slotOf(&IBaseCommandHandler::onCommand), 0);
}

TEST(SlotOrder, InterfacesOfOneOperationHoldNothingElse) {
  EXPECT_EQ(slotOf(&IAssetProvider::handleAssetRequest), 0);
  EXPECT_EQ(slots<IAssetProvider>(), 1);
  EXPECT_EQ(slotOf(&NetworkMessageCallback::onMessage), 0);
  EXPECT_EQ(slots<NetworkMessageCallback>(), 1);
}

TEST(SlotOrder, DeliveriesStandFourthBehindTheDestructor) {
  EXPECT_EQ(slotOf(&IBaseStatusCallback::onStatus), 0);
  EXPECT_EQ(slots<IBaseStatusCallback>(), 3);
  EXPECT_EQ(slotOf(&IBaseDataCallback::onData), 3);
  EXPECT_EQ(slotOf(&IBaseCommandCallback::onReturn), 3);
  EXPECT_EQ(slotOf(&IBaseTimerCallback::onTimer), 3);
  EXPECT_EQ(slotOf(&IBaseLifetimeCallback::onLifetime), 3);
  EXPECT_EQ(slotOf(&IBaseUserCallback::onUserInput), 3);
}

TEST(SlotOrder, CallbacksInsideTheLibraryAddNothing) {
  EXPECT_EQ(slots<ICoreDataCallback>(), 4);
  EXPECT_EQ(slots<ICoreCommandCallback>(), 4);
  EXPECT_EQ(slots<ICoreTimerCallback>(), 4);
  EXPECT_EQ(slots<ICoreLifetimeCallback>(), 4);
  EXPECT_EQ(slots<ICoreUserCallback>(), 4);
}

}  // namespace
}  // namespace Zelv
