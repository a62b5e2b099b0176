#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace Zelv::Infrastructure {

/// What is cut off around words of HTTP: spaces, tabs, carriage returns and line feeds.
inline constexpr std::string_view cHttpBlanks = " \t\r\n";

// The sets are constants of a few characters: compared one by one they cost less than a call for
// each character of the text, which the operations of string_view make.

inline bool isOneOf(char aCharacter, std::string_view aSet) {
  for (char const one : aSet) {
    if (one == aCharacter) {
      return true;
    }
  }
  return false;
}

inline std::string_view trimHead(std::string_view aText, std::string_view aCharacters) {
  while (!aText.empty() && isOneOf(aText.front(), aCharacters)) {
    aText.remove_prefix(1);
  }
  return aText;
}

inline std::string_view trimTail(std::string_view aText, std::string_view aCharacters) {
  while (!aText.empty() && isOneOf(aText.back(), aCharacters)) {
    aText.remove_suffix(1);
  }
  return aText;
}

/// The length of the text in front of the first of these characters.
inline std::size_t lengthUpTo(std::string_view aText, std::string_view aCharacters) {
  if (aCharacters.size() == 1) {
    return std::min(aText.find(aCharacters.front()), aText.size());
  }
  std::size_t length = 0;
  while (length < aText.size() && !isOneOf(aText[length], aCharacters)) {
    ++length;
  }
  return length;
}

inline std::string_view trimBoth(std::string_view aText, std::string_view aCharacters) {
  return trimTail(trimHead(aText, aCharacters), aCharacters);
}

/// The first words between separators, each one character of aSeparators, without blanks around
/// them. Nothing between two separators is no word; words that are not there are empty.
template <std::size_t Count>
std::array<std::string_view, Count> firstWords(std::string_view aText,
                                               std::string_view aSeparators) {
  std::array<std::string_view, Count> words;
  for (std::string_view& word : words) {
    aText = trimHead(aText, aSeparators);
    std::size_t const end = lengthUpTo(aText, aSeparators);
    word = trimBoth(aText.substr(0, end), cHttpBlanks);
    aText.remove_prefix(end);
  }
  return words;
}

}  // namespace Zelv::Infrastructure
