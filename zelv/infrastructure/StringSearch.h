#pragma once

#include <string>
#include <utility>
#include <vector>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// Searches a buffer for any of several byte strings at once, with an automaton after Aho and
/// Corasick ("Efficient string matching: an aid to bibliographic search", 1975). Lengths rule, so
/// patterns and buffers may hold zero bytes.
///
/// The automaton is made anew for each search: pattern lists are tiny, and buffers have the size of
/// a message.
class ZELV_EXPORT StringSearch {
 public:
  struct s_node;

  /// The automaton of some patterns. The shape of its tree is relied on and is not that of the
  /// textbook: while a pattern is inserted, a byte is looked for among the first children of the
  /// root, as many as the current node has children. So with "ab" before "aa" the pattern "aa" is
  /// found at a lone "a".
  ///
  /// @return the root; the caller owns it, and with it all nodes.
  static s_node* m_BuildTree(std::vector<std::string> const& aPatterns);

  /// The index at which the match begins that ends first; of several that end there, the one that
  /// stands first at its node. -1 without a match, and for an empty buffer.
  static int FindFirst(std::vector<std::string> const& aPatterns, char const* aText,
                       unsigned int aLength);

  /// Appends all matches, overlapping ones included, in the order in which they end: the pattern,
  /// and the index at which it begins. @return always 1.
  static unsigned int FindAll(std::vector<std::string> const& aPatterns, char const* aText,
                              unsigned int aLength,
                              std::vector<std::pair<std::string, unsigned int>>& aMatches);
};

/// A node of the automaton.
struct ZELV_EXPORT StringSearch::s_node {
  s_node(s_node* aParent, char aValue);
  s_node(s_node const&) = delete;
  s_node& operator=(s_node const&) = delete;

  /// Deletes all nodes below, without recursion: a tree is as deep as its longest pattern.
  ~s_node();

  /// The byte on the edge from the parent; 0 at the root.
  char value;
  s_node* parent;
  /// Where the search goes on when no child has the next byte; the root's is itself.
  s_node* fail;
  /// Owned, in the order of their making.
  std::vector<s_node*> children;
  /// What ends here: the node's own patterns first, then those of the node that it fails to.
  std::vector<std::string> outputs;
};

}  // namespace Zelv::Infrastructure
