#include "zelv/infrastructure/XmlText.h"

#include <cstring>

#include "zelv/infrastructure/Utf8.h"

namespace Zelv::Infrastructure {

namespace {

constexpr std::size_t cLongestCharacter = 4;

}  // namespace

XmlText::XmlText(std::string const& aText)
    : mData(aText.c_str()), mSize(std::strlen(aText.c_str())) {
  if (mayEndWithinCharacter({mData, mSize})) {
    mPadded.assign(mData, mSize);
    mPadded.append(cLongestCharacter, '\0');
    mData = mPadded.data();
  }
}

bool XmlText::mayEndWithinCharacter(std::string_view aText) {
  for (std::size_t back = 1; back < cLongestCharacter && back <= aText.size(); ++back) {
    if (utf8Length(aText[aText.size() - back]) > static_cast<int>(back)) {
      return true;
    }
  }
  return false;
}

bool XmlText::endsWithinCharacter(std::string_view aText) {
  if (!mayEndWithinCharacter(aText)) {
    return false;
  }
  std::size_t at = 0;
  while (at < aText.size()) {
    at += static_cast<std::size_t>(utf8Length(aText[at]));
  }
  return at > aText.size();
}

}  // namespace Zelv::Infrastructure
