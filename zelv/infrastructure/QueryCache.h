#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Zelv::Infrastructure {

class Query;

/// The queries that a document was asked last, so that a path that comes again needs no parsing.
/// Queries do not depend on the document. Not safe for several threads.
class QueryCache {
 public:
  static constexpr std::size_t Capacity = 32;
  /// Longer paths are forgotten at once; they are nobody's habit.
  static constexpr std::size_t MaxPath = 512;

  QueryCache();
  QueryCache(QueryCache const&) = delete;
  QueryCache& operator=(QueryCache const&) = delete;
  ~QueryCache();

  /// The query for a path; valid until the next call.
  /// @throws std::out_of_range  as Query.
  Query& find(std::string const& aPath);

 private:
  Query& add(std::string const& aPath);

  std::vector<std::unique_ptr<Query>> mQueries;
  std::unique_ptr<Query> mLong;
  std::size_t mLatest = 0;
  std::size_t mOldest = 0;
};

}  // namespace Zelv::Infrastructure
