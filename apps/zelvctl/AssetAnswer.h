#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace ZelvCtl {

/// An asset as a set describes it, unchecked.
struct Asset {
  std::string name;  ///< of its element
  std::string id;
  std::string source;
};

/// Reads the text that answers for one thing that was asked for.
class AssetAnswer {
 public:
  static constexpr std::size_t MaxAssets = 65536;

  /// The text is none.
  class Malformed : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
  };

  /// Throws Malformed.
  explicit AssetAnswer(std::string const& aText);

  std::string const& requestId() const { return mRequestId; }

  /// Whether the set says that it cannot answer, neither this nor what else was asked for.
  bool isFailure() const { return mIsFailure; }

  /// Those that have a file, in the order in which the files come.
  std::vector<Asset> const& assets() const { return mAssets; }

 private:
  std::string mRequestId;
  bool mIsFailure = false;
  std::vector<Asset> mAssets;
};

}  // namespace ZelvCtl
