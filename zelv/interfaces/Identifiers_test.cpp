#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "zelv/interfaces/IAppCommand.h"
#include "zelv/interfaces/IAppData.h"
#include "zelv/interfaces/IAppEnvironment.h"
#include "zelv/interfaces/IAppLifetime.h"
#include "zelv/interfaces/IAppTimer.h"
#include "zelv/interfaces/IAppUser.h"
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
#include "zelv/interfaces/ReservedIdentifiers.h"

namespace Zelv {
namespace {

struct Row {
  char const* name;
  GUID const& identifier;
  char const* text;
};

std::vector<Row> const& rows() {
  static std::vector<Row> const table{
      {"IBase", IID_IBase, "2cb63c08-01e0-41cd-950e-1566f18e0983"},
      {"IBaseData", IID_IBaseData, "ef9fb54f-92e4-4827-b1af-f61925e2fd79"},
      {"IAppData", IID_IAppData, "4eed1b51-abcd-4ab0-b5a4-d5d5fbdcec59"},
      {"ICoreData", IID_ICoreData, "045d52de-8e56-48d7-9ca5-e65bb75fa1da"},
      {"IBaseStatusCallback", IID_IBaseStatusCallback, "ace0d0b6-f070-41df-aa77-d3c1e0016afd"},
      {"IBaseDataCallback", IID_IBaseDataCallback, "939e248e-2303-43a0-a7fd-5902cbab44d3"},
      {"ICoreDataCallback", IID_ICoreDataCallback, "33f6ce1f-aa03-4c57-b3ab-e89acf0b557f"},
      {"IBaseCommandCallback", IID_IBaseCommandCallback, "c0ddf044-1bfc-400e-9726-32283795d8f2"},
      {"ICoreCommandCallback", IID_ICoreCommandCallback, "f040eb61-f039-4d69-9ee1-f9aa1c31a42d"},
      {"IBaseTimer", IID_IBaseTimer, "4b36de38-15c1-4979-80f9-ed9b2bc4e9fa"},
      {"ICoreTimer", IID_ICoreTimer, "77ffd078-ce2d-424c-a178-d251f93657ba"},
      {"IAppTimer", IID_IAppTimer, "de7cebbb-b648-464a-91f6-d30c6c37892c"},
      {"IBaseEnvironment", IID_IBaseEnvironment, "91f8e6b1-abc2-4f8c-81ff-9f8f5ef16571"},
      {"ICoreEnvironment", IID_ICoreEnvironment, "50622789-0b49-4184-8c46-ce8d7614a0e1"},
      {"IAppEnvironment", IID_IAppEnvironment, "44aca3b0-351e-4598-bab0-88ddaa00563d"},
      {"IBaseLifetimeCallback", IID_IBaseLifetimeCallback, "af8af6ee-423e-4e8b-baaf-7b3c7ef35460"},
      {"ICoreLifetimeCallback", IID_ICoreLifetimeCallback, "854cb759-b73b-4582-91de-ce469507c8f5"},
      {"IBaseLifetime", IID_IBaseLifetime, "dda44fe5-4d54-4221-a796-d63010298d7b"},
      {"ICoreLifetime", IID_ICoreLifetime, "6997bde6-8695-4d68-8ce0-bf894ce52348"},
      {"IAppLifetime", IID_IAppLifetime, "665aa5cf-5a11-4f40-9103-1b6274ed3d40"},
      {"IBaseCommand", IID_IBaseCommand, "1e234183-9212-4689-8a32-ac21650b028c"},
      {"IAppCommand", IID_IAppCommand, "8b69e984-ad92-4d2c-bccc-5264349b847b"},
      {"ICoreCommand", IID_ICoreCommand, "29d4af8c-36c8-4245-9781-8cc319f4e703"},
      {"IBaseCommandHandler", IID_IBaseCommandHandler, "b762f013-c6af-42d9-a393-7e29c870dd7c"},
      {"IBaseTimerCallback", IID_IBaseTimerCallback, "06125ebd-d897-471a-be02-2cedf04c0f33"},
      {"ICoreTimerCallback", IID_ICoreTimerCallback, "cdbb9e15-02d6-42c8-958a-5b7c931af631"},
      {"IBaseUser", IID_IBaseUser, "59f614ab-8a1e-4bef-a2dd-dfdc191dc6bc"},
      {"IAppUser", IID_IAppUser, "9974adef-79d1-421b-a2b5-830b7da732f6"},
      {"ICoreUser", IID_ICoreUser, "8c1e8246-b9c5-4b3d-a60d-0f619a774d72"},
      {"IBaseUserCallback", IID_IBaseUserCallback, "cedcedf4-c47e-4d63-9ff3-f811515ace03"},
      {"ICoreUserCallback", IID_ICoreUserCallback, "619b2e16-ff50-43f3-bbc2-9a1810499642"},
      {"IDataProvider", IID_IDataProvider, "a1897a99-3255-4ad5-852f-b2cedce72768"},
  };
  return table;
}

char const* const cReserved[] = {
    "198c646c-bd6f-47ad-a0b3-c9d2c12350ee", "68282f57-cae9-4385-9ff5-bbfa62026053",
    "0b5d085b-54da-4aa0-915f-8ecf82c21450", "1b999b0d-bd8d-4cca-af29-29e208cb5e5f",
    "3b0d5bec-bd77-4d4e-872e-1a867c5d15d7", "0d447f57-4f93-4c8a-841f-dfd4ba6cd2fb",
    "dbfcc88b-1f56-4798-b573-869a65f1bbdc", "ae7c4fcf-5aca-4a50-9494-c6dca86d4316",
    "518cbbfc-ccaf-488b-879a-ed4aaa0c0f36"};

/// What an object of this unit finds while the process is still loading.
struct AtLoadTime {
  GUID const seen = IID_ICoreData;
  std::string const text = IID_ICoreTimer.toString();
};
AtLoadTime const gAtLoadTime;

TEST(Identifiers, AreThoseOfTheTable) {
  for (Row const& row : rows()) {
    EXPECT_EQ(row.identifier.toString(), row.text) << row.name;
    EXPECT_EQ(row.identifier, GUID(row.text)) << row.name;
  }
}

TEST(Identifiers, ReservedOnesAreThoseOfTheTableInItsOrder) {
  ASSERT_EQ(RESERVED_IDENTIFIERS.size(), std::size(cReserved));
  for (std::size_t i = 0; i < RESERVED_IDENTIFIERS.size(); ++i) {
    EXPECT_EQ(RESERVED_IDENTIFIERS[i].toString(), cReserved[i]);
  }
}

TEST(Identifiers, OfInterfacesAndReservedOnesAreAllDifferent) {
  std::set<GUID> seen;
  for (Row const& row : rows()) {
    EXPECT_TRUE(seen.insert(row.identifier).second) << row.name;
  }
  for (GUID const& reserved : RESERVED_IDENTIFIERS) {
    EXPECT_TRUE(seen.insert(reserved).second) << reserved.toString();
  }
  EXPECT_EQ(seen.size(), 32U + 9U);
  EXPECT_FALSE(seen.contains(GUID::nullGUID));
}

TEST(Identifiers, AreThereForStaticObjectsOfEveryUnitThatIncludesThem) {
  EXPECT_EQ(gAtLoadTime.seen, GUID("045d52de-8e56-48d7-9ca5-e65bb75fa1da"));
  EXPECT_EQ(gAtLoadTime.text, "77ffd078-ce2d-424c-a178-d251f93657ba");
}

}  // namespace
}  // namespace Zelv
