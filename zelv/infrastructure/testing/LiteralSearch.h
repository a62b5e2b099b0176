#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Zelv::Infrastructure::Testing {

/// The search for several strings, written down plainly: nodes are rows of tables, and the links
/// for failures are looked up where they are needed. The oracle of StringSearch.
class LiteralSearch {
 public:
  explicit LiteralSearch(std::vector<std::string> const& aPatterns) {
    makeNode(0, '\0');
    for (std::string const& pattern : aPatterns) {
      insert(pattern);
    }
  }

  /// All matches in the order in which they end.
  std::vector<std::pair<std::string, unsigned int>> all(std::string const& aText) const {
    std::vector<std::pair<std::string, unsigned int>> matches;
    std::size_t state = 0;
    for (std::size_t i = 0; i < aText.size(); ++i) {
      state = next(state, aText[i]);
      for (std::string const& pattern : outputs(state)) {
        matches.emplace_back(pattern, static_cast<unsigned int>(i + 1 - pattern.size()));
      }
    }
    return matches;
  }

  int first(std::string const& aText) const {
    auto const matches = all(aText);
    return matches.empty() ? -1 : static_cast<int>(matches.front().second);
  }

 private:
  static constexpr std::size_t cNone = static_cast<std::size_t>(-1);

  std::size_t makeNode(std::size_t aParent, char aByte) {
    mParent.push_back(aParent);
    mByte.push_back(aByte);
    mChildren.emplace_back();
    mOwn.emplace_back();
    return mByte.size() - 1;
  }

  void insert(std::string const& aPattern) {
    std::size_t current = 0;
    for (char const byte : aPattern) {
      std::size_t const count = mChildren[current].size();
      std::size_t found = cNone;
      for (std::size_t i = 0; i < count && i < mChildren[0].size() && found == cNone; ++i) {
        if (mByte[mChildren[0][i]] == byte) {
          found = mChildren[0][i];
        }
      }
      if (found == cNone) {
        found = makeNode(current, byte);
        mChildren[current].push_back(found);
      }
      current = found;
    }
    mOwn[current].push_back(aPattern);
  }

  std::size_t child(std::size_t aNode, char aByte, bool aLast) const {
    std::size_t found = cNone;
    for (std::size_t const child : mChildren[aNode]) {
      if (mByte[child] == aByte && (found == cNone || aLast)) {
        found = child;
      }
    }
    return found;
  }

  std::size_t failure(std::size_t aNode) const {
    if (aNode == 0 || mParent[aNode] == 0) {
      return 0;
    }
    for (std::size_t from = failure(mParent[aNode]);; from = failure(from)) {
      std::size_t const found = child(from, mByte[aNode], false);
      if (found != cNone) {
        return found;
      }
      if (from == 0) {
        return 0;
      }
    }
  }

  /// The root hands nothing down to those that fail to it for want of anything better.
  bool inherits(std::size_t aNode) const {
    return mParent[aNode] != 0 && aNode != 0 && failure(aNode) != 0;
  }

  std::vector<std::string> outputs(std::size_t aNode) const {
    std::vector<std::string> texts = mOwn[aNode];
    if (inherits(aNode)) {
      std::vector<std::string> const more = outputs(failure(aNode));
      texts.insert(texts.end(), more.begin(), more.end());
    }
    return texts;
  }

  std::size_t next(std::size_t aState, char aByte) const {
    for (;;) {
      std::size_t const found = child(aState, aByte, true);
      if (found != cNone) {
        return found;
      }
      if (aState == 0) {
        return 0;
      }
      aState = failure(aState);
    }
  }

  std::vector<std::size_t> mParent;
  std::vector<char> mByte;
  std::vector<std::vector<std::size_t>> mChildren;
  std::vector<std::vector<std::string>> mOwn;
};

}  // namespace Zelv::Infrastructure::Testing
