#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace ZelvCtl {

/// What did not come of a request that asked for several things, a line for each.
class Failures {
 public:
  /// Beyond it they are counted.
  static constexpr std::size_t MaxLines = 1000;

  void add(std::string const& aText);

  bool isEmpty() const { return mTexts.empty(); }

  /// Throws the last as std::runtime_error, if there is any. The others go out before, as the
  /// program tells of the one that ends it.
  void raise(std::ostream& aErrors) const;

 private:
  std::vector<std::string> mTexts;
  std::size_t mMore = 0;
};

}  // namespace ZelvCtl
