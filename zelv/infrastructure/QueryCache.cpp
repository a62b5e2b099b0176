#include "zelv/infrastructure/QueryCache.h"

#include "zelv/infrastructure/Query.h"

namespace Zelv::Infrastructure {

QueryCache::QueryCache() = default;
QueryCache::~QueryCache() = default;

Query& QueryCache::find(std::string const& aPath) {
  if (mLatest < mQueries.size() && mQueries[mLatest]->path() == aPath) {
    return *mQueries[mLatest];
  }
  for (std::size_t index = 0; index < mQueries.size(); ++index) {
    if (mQueries[index]->path() == aPath) {
      mLatest = index;
      return *mQueries[index];
    }
  }
  return add(aPath);
}

Query& QueryCache::add(std::string const& aPath) {
  auto query = std::make_unique<Query>(aPath);
  if (aPath.size() > MaxPath) {
    mLong = std::move(query);
    return *mLong;
  }
  if (mQueries.size() < Capacity) {
    mQueries.push_back(std::move(query));
    mLatest = mQueries.size() - 1;
  } else {
    mQueries[mOldest] = std::move(query);
    mLatest = mOldest;
    mOldest = (mOldest + 1) % Capacity;
  }
  return *mQueries[mLatest];
}

}  // namespace Zelv::Infrastructure
