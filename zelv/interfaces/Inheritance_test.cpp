#include <gtest/gtest.h>

#include <type_traits>

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

/// A virtual base is the one kind from which no static_cast leads down.
template <typename Derived, typename Base>
concept CastsDown = requires(Base* aBase) {
  static_cast<Derived*>(aBase);
};

template <typename Derived, typename Base>
constexpr bool cVirtually = std::is_convertible_v<Derived*, Base*> && !CastsDown<Derived, Base>;

/// All that the object behind InterfaceFactory may come to implement.
class Everything : public virtual ICoreData,
                   public virtual IAppData,
                   public virtual ICoreEnvironment,
                   public virtual IAppEnvironment,
                   public virtual ICoreLifetime,
                   public virtual IAppLifetime,
                   public virtual ICoreCommand,
                   public virtual IAppCommand,
                   public virtual ICoreTimer,
                   public virtual IAppTimer,
                   public virtual ICoreUser,
                   public virtual IAppUser,
                   public virtual ICoreDataCallback {};

template <typename Base>
struct NonVirtual : Base {};

TEST(Inheritance, TheProbeTellsVirtualBasesFromOthers) {
  EXPECT_FALSE((cVirtually<NonVirtual<IBase>, IBase>));
  EXPECT_TRUE((cVirtually<IBaseData, IBase>));
}

TEST(Inheritance, FamiliesDeriveVirtuallyFromTheRoot) {
  EXPECT_TRUE((cVirtually<IBaseData, IBase>));
  EXPECT_TRUE((cVirtually<IBaseTimer, IBase>));
  EXPECT_TRUE((cVirtually<IBaseUser, IBase>));
  EXPECT_TRUE((cVirtually<IBaseLifetime, IBase>));
  EXPECT_TRUE((cVirtually<IBaseCommand, IBase>));
  EXPECT_TRUE((cVirtually<IBaseEnvironment, IBase>));
  EXPECT_TRUE((cVirtually<IBaseStatusCallback, IBase>));
  EXPECT_TRUE((cVirtually<IDataProvider, IBase>));
  EXPECT_TRUE((cVirtually<IBaseCommandHandler, IBase>));
}

TEST(Inheritance, WhatApplicationsAndComponentsSeeDerivesVirtuallyFromTheSharedPart) {
  EXPECT_TRUE((cVirtually<IAppData, IBaseData> && cVirtually<ICoreData, IBaseData>));
  EXPECT_TRUE((cVirtually<IAppTimer, IBaseTimer> && cVirtually<ICoreTimer, IBaseTimer>));
  EXPECT_TRUE((cVirtually<IAppUser, IBaseUser> && cVirtually<ICoreUser, IBaseUser>));
  EXPECT_TRUE(
      (cVirtually<IAppLifetime, IBaseLifetime> && cVirtually<ICoreLifetime, IBaseLifetime>));
  EXPECT_TRUE((cVirtually<IAppCommand, IBaseCommand> && cVirtually<ICoreCommand, IBaseCommand>));
  EXPECT_TRUE((cVirtually<IAppEnvironment, IBaseEnvironment> &&
               cVirtually<ICoreEnvironment, IBaseEnvironment>));
}

TEST(Inheritance, CallbacksDeriveVirtuallyFromTheStatusCallback) {
  EXPECT_TRUE((cVirtually<IBaseDataCallback, IBaseStatusCallback>));
  EXPECT_TRUE((cVirtually<IBaseCommandCallback, IBaseStatusCallback>));
  EXPECT_TRUE((cVirtually<IBaseTimerCallback, IBaseStatusCallback>));
  EXPECT_TRUE((cVirtually<IBaseLifetimeCallback, IBaseStatusCallback>));
  EXPECT_TRUE((cVirtually<IBaseUserCallback, IBaseStatusCallback>));
  EXPECT_TRUE((cVirtually<ICoreDataCallback, IBaseDataCallback>));
  EXPECT_TRUE((cVirtually<ICoreCommandCallback, IBaseCommandCallback>));
  EXPECT_TRUE((cVirtually<ICoreTimerCallback, IBaseTimerCallback>));
  EXPECT_TRUE((cVirtually<ICoreLifetimeCallback, IBaseLifetimeCallback>));
  EXPECT_TRUE((cVirtually<ICoreUserCallback, IBaseUserCallback>));
}

TEST(Inheritance, AssetProviderAndNetworkReceiverStandAlone) {
  EXPECT_FALSE((std::is_base_of_v<IBase, IAssetProvider>));
  EXPECT_FALSE((std::is_base_of_v<IBase, NetworkMessageCallback>));
}

TEST(Inheritance, AllInterfacesTogetherHoldOneOfEachSharedPart) {
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBase*>));
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBaseData*>));
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBaseEnvironment*>));
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBaseLifetime*>));
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBaseCommand*>));
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBaseTimer*>));
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBaseUser*>));
  EXPECT_TRUE((std::is_convertible_v<Everything*, IBaseStatusCallback*>));
}

}  // namespace
}  // namespace Zelv
