#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Zelv::Infrastructure {

/// A document of bare elements with plain texts in them, read without building a tree, which takes
/// many times as long. Messages between devices nearly always are such documents.
///
/// Plain means: no attributes, no markup but tags, no element twice within another, either elements
/// or a text in one, texts of printable ASCII with single blanks and the entities of four
/// characters in them. All others are left to HierarchicalDB, whose answers are the same for these.
class PlainXml {
 public:
  static constexpr std::size_t MaxText = 65536;
  static constexpr std::size_t MaxElements = 32;
  static constexpr std::size_t MaxName = 255;

  enum class Found {
    Yes,
    No,
    Unasked,  ///< a path of another kind than those that are known here
  };

  explicit PlainXml(std::string const& aText);
  PlainXml(PlainXml const&) = delete;
  PlainXml& operator=(PlainXml const&) = delete;

  bool isPlain() const { return mPlain; }

  /// As it was given.
  std::string const& text() const { return mText; }

  /// What HierarchicalDB::getContent() gives for paths of names that end in "text()", "node()" or
  /// "*[1]/name()". Of a document that is plain only.
  ///
  /// @param aResult  set when the answer is Found::Yes.
  Found content(std::string_view aXPath, std::string& aResult) const;

 private:
  /// Small, and by position: memory for all of them is had faster than for a larger object.
  struct Element {
    std::uint32_t nameAt;
    std::uint32_t textAt;
    std::uint32_t textSize;
    std::uint8_t nameSize;
    std::uint8_t parent;
    bool hasElements;
  };

  /// Both as the parent of the root and as an element that is not there.
  static constexpr std::size_t cNone = MaxElements;

  bool read();
  bool begin(std::string_view& aRest);
  bool end(std::string_view& aRest);
  bool take(std::string_view& aRest);

  std::string_view nameOf(Element const& aElement) const;
  std::string_view textOf(Element const& aElement) const;
  std::uint32_t at(std::string_view aPlace) const;
  std::size_t child(std::size_t aParent, std::string_view aName) const;
  /// False when a step of the path is more than a name.
  bool walk(std::string_view aPath, std::size_t& aElement) const;
  Found valueOf(std::string_view aPath, bool aMayBeEmpty, std::string& aResult) const;
  Found firstNameIn(std::string_view aPath, std::string& aResult) const;

  std::string const mText;
  std::array<Element, MaxElements> mElements;
  std::size_t mCount = 0;
  std::size_t mOpen = cNone;
  bool const mPlain;
};

}  // namespace Zelv::Infrastructure
