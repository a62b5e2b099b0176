#include "apps/zelvctl/PrintableText.h"

#include <functional>

namespace ZelvCtl {

namespace {

/// Replaces each control character: those below the blank, DEL, and U+0080 to U+009F, which some
/// terminals obey too.
std::string replaceControls(std::string const& aText,
                            std::function<std::string(std::string const&)> const& aReplace) {
  std::string text;
  for (std::size_t at = 0; at < aText.size(); ++at) {
    auto const byte = static_cast<unsigned char>(aText[at]);
    auto const next = at + 1 < aText.size() ? static_cast<unsigned char>(aText[at + 1]) : 0U;
    if (byte == 0xc2 && next >= 0x80 && next < 0xa0) {
      text += aReplace(aText.substr(at++, 2));
    } else if (byte < 0x20 || byte == 0x7f) {
      text += aReplace(aText.substr(at, 1));
    } else {
      text += aText[at];
    }
  }
  return text;
}

std::string asCode(std::string const& aBytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string code;
  for (char const letter : aBytes) {
    auto const byte = static_cast<unsigned char>(letter);
    code += {'\\', 'x', digits[byte >> 4U], digits[byte & 0xfU]};
  }
  return code;
}

std::string replaceAll(std::string const& aText, char aWanted, char const* aBy) {
  std::string text;
  for (char const letter : aText) {
    letter == aWanted ? text.append(aBy) : text.append(1, letter);
  }
  return text;
}

}  // namespace

std::string PrintableText::masked(std::string const& aText) {
  return replaceControls(aText, [](std::string const&) { return "?"; });
}

std::string PrintableText::line(std::string const& aText) {
  return replaceControls(replaceAll(aText, '\\', "\\\\"), [](std::string const& aControl) {
    return aControl == "\n" ? "\\n" : asCode(aControl);
  });
}

std::string PrintableText::field(std::string const& aText) {
  return aText.empty() ? "-" : replaceAll(line(aText), ' ', "\\x20");
}

std::string PrintableText::block(std::string const& aText) {
  return replaceControls(aText, [](std::string const& aControl) {
    return aControl == "\n" || aControl == "\t" ? aControl : "?";
  });
}

}  // namespace ZelvCtl
