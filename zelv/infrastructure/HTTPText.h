#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Zelv::Infrastructure {

/// What is cut off around words of HTTP: spaces, tabs, carriage returns and line feeds.
inline constexpr std::string_view cHttpBlanks = " \t\r\n";

inline std::string_view trimHead(std::string_view aText, std::string_view aCharacters) {
  std::size_t const begin = aText.find_first_not_of(aCharacters);
  return begin == std::string_view::npos ? std::string_view() : aText.substr(begin);
}

inline std::string_view trimTail(std::string_view aText, std::string_view aCharacters) {
  std::size_t const last = aText.find_last_not_of(aCharacters);
  return last == std::string_view::npos ? std::string_view() : aText.substr(0, last + 1);
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
    std::size_t const end = aText.find_first_of(aSeparators);
    word = trimBoth(aText.substr(0, end), cHttpBlanks);
    aText = end == std::string_view::npos ? std::string_view() : aText.substr(end);
  }
  return words;
}

}  // namespace Zelv::Infrastructure
