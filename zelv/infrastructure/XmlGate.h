#pragma once

#include <cstddef>
#include <string>

namespace Zelv::Infrastructure {

/// Stands before the XML library, which parses, copies and deletes by recursion, searches
/// attributes linearly, and needs fifty times a text's size for a tree of small elements.
///
/// Looks through a text once and tells what its tree would hold, without building it. It cuts the
/// text into the very pieces that the library would cut it into, odd cases included, up to where
/// the library would stop for an error; behind that it may only overestimate.
class XmlGate {
 public:
  /// Elements within each other.
  static constexpr int MaxDepth = 128;
  /// Attributes of one element.
  static constexpr int MaxAttributes = 256;
  /// Elements of a text: as many as the shortest of them fill a file of the greatest size.
  static constexpr int MaxElements = 1 << 20;
  /// Bytes of a text: those of the longest message.
  static constexpr std::size_t MaxText = std::size_t{16} << 20;
  /// Bytes of a file, read or written.
  static constexpr std::size_t MaxFile = std::size_t{4} << 20;

  /// Null if the library may have this text, otherwise what there is too much of, for the log.
  ///
  /// @param aText   ends with a NUL at aText[aSize] and holds none before; MUST be padded as by
  ///                XmlText.
  /// @param aLevel  how many elements the text will stand in.
  static char const* objection(char const* aText, std::size_t aSize, int aLevel = 0);
};

}  // namespace Zelv::Infrastructure
