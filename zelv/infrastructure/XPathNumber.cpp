#include "zelv/infrastructure/XPathNumber.h"

#include <charconv>
#include <limits>
#include <system_error>

#include "zelv/infrastructure/XPathCharacter.h"

namespace Zelv::Infrastructure {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::size_t digits(std::string_view aText) {
  std::size_t count = 0;
  while (count < aText.size() && XPathCharacter::isDigit(aText[count])) {
    ++count;
  }
  return count;
}

std::string_view trimmed(std::string_view aText) {
  while (!aText.empty() && XPathCharacter::isBlank(aText.front())) {
    aText.remove_prefix(1);
  }
  while (!aText.empty() && XPathCharacter::isBlank(aText.back())) {
    aText.remove_suffix(1);
  }
  return aText;
}

// Whole numbers of so few digits are exact in 64 bits and nearly all that documents hold.
constexpr std::size_t exactDigits = 15;

double whole(std::string_view aDigits) {
  long long value = 0;
  for (char const digit : aDigits) {
    value = value * 10 + (digit - '0');
  }
  return static_cast<double>(value);
}

// REQUIRES: aText is digits with at most one point among them.
double decimal(std::string_view aText, std::size_t aWholeDigits) {
  double value = 0;
  auto const done =
      std::from_chars(aText.data(), aText.data() + aText.size(), value, std::chars_format::fixed);
  if (done.ec != std::errc::result_out_of_range) {
    return value;
  }
  bool const large = aText.substr(0, aWholeDigits).find_first_not_of('0') != std::string_view::npos;
  return large ? std::numeric_limits<double>::infinity() : 0;
}

}  // namespace

double XPathNumber::parse(std::string_view aText) {
  std::string_view text = trimmed(aText);
  bool const negative = !text.empty() && text.front() == '-';
  text.remove_prefix(negative ? 1 : 0);
  std::size_t const wholeDigits = digits(text);
  double value = 0;
  if (wholeDigits == text.size()) {
    if (wholeDigits == 0) {
      return notANumber;
    }
    value = wholeDigits <= exactDigits ? whole(text) : decimal(text, wholeDigits);
  } else {
    std::size_t const fraction =
        text[wholeDigits] == '.' ? digits(text.substr(wholeDigits + 1)) : 0;
    if (text[wholeDigits] != '.' || wholeDigits + fraction == 0 ||
        wholeDigits + 1 + fraction != text.size()) {
      return notANumber;
    }
    value = decimal(text, wholeDigits);
  }
  return negative ? -value : value;
}

}  // namespace Zelv::Infrastructure
