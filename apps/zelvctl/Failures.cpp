#include "apps/zelvctl/Failures.h"

#include <stdexcept>

#include "apps/zelvctl/PrintableText.h"

namespace ZelvCtl {

void Failures::add(std::string const& aText) {
  if (mTexts.size() < MaxLines) {
    mTexts.push_back(aText);
  } else {
    ++mMore;
  }
}

void Failures::raise(std::ostream& aErrors) const {
  if (isEmpty()) {
    return;
  }
  std::vector<std::string> texts = mTexts;
  if (mMore > 0) {
    texts.push_back("and " + std::to_string(mMore) + " more");
  }
  std::string const last = texts.back();
  texts.pop_back();
  for (std::string const& text : texts) {
    aErrors << "zelvctl: " << PrintableText::masked(text) << '\n';
  }
  aErrors << std::flush;
  throw std::runtime_error(last);
}

}  // namespace ZelvCtl
