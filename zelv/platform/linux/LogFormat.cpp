#include "zelv/platform/linux/LogFormat.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <utility>

namespace Zelv::Platform {
namespace {

/// One conversion of a format, as in printf(3).
struct Conversion {
  std::string flags;
  int width = -1;
  int precision = -1;
  std::string length;
  char type = '\0';
};

// The analyzer takes any list that a function did not start itself for one that nobody started.
// NOLINTBEGIN(clang-analyzer-valist.Uninitialized)

/// Reads a format from front to back and takes the arguments as it needs them.
class Formatter {
 public:
  Formatter(char const* aFormat, std::va_list* aArguments)
      : mFormat(aFormat), mArguments(aArguments) {}

  std::string format() {
    while (*mFormat != '\0') {
      std::size_t const plain = std::strcspn(mFormat, "%");
      mText.append(mFormat, plain);
      mFormat += plain;
      if (*mFormat != '\0' && !convert()) {
        mText += mFormat;
        break;
      }
    }
    return std::move(mText);
  }

 private:
  // The format stands at a "%". False when what follows is not known.
  bool convert() {
    char const* const start = mFormat++;
    Conversion conversion;
    readFlags(conversion);
    conversion.width = readNumber();
    if (*mFormat == '.') {
      ++mFormat;
      conversion.precision = std::max(readNumber(), -1);
      if (conversion.precision == -1 && mFormat[-1] == '.') {
        conversion.precision = 0;
      }
    }
    readLength(conversion);
    conversion.type = *mFormat;
    if (conversion.type != '\0' && print(conversion)) {
      ++mFormat;
      return true;
    }
    mFormat = start;
    return false;
  }

  void readFlags(Conversion& aConversion) {
    std::size_t const count = std::strspn(mFormat, "-+ #0'I");
    aConversion.flags.assign(mFormat, std::min<std::size_t>(count, 8));
    mFormat += count;
  }

  // A number in the format or, for "*", among the arguments; -1 when there is none.
  int readNumber() {
    if (*mFormat == '*') {
      ++mFormat;
      return bounded(va_arg(*mArguments, int));
    }
    if (*mFormat < '0' || *mFormat > '9') {
      return -1;
    }
    int number = 0;
    for (; *mFormat >= '0' && *mFormat <= '9'; ++mFormat) {
      number = bounded(number * 10 + (*mFormat - '0'));
    }
    return number;
  }

  static int bounded(int aNumber) {
    return std::clamp(aNumber, -LogFormat::cMostOfValue, LogFormat::cMostOfValue);
  }

  void readLength(Conversion& aConversion) {
    std::size_t const count = std::strspn(mFormat, "hlqLjzt");
    aConversion.length.assign(mFormat, std::min<std::size_t>(count, 3));
    mFormat += count;
  }

  bool print(Conversion const& aConversion) {
    switch (aConversion.type) {
      case 'd':
      case 'i':
      case 'o':
      case 'u':
      case 'x':
      case 'X':
        return printInteger(aConversion);
      case 'a':
      case 'A':
      case 'e':
      case 'E':
      case 'f':
      case 'F':
      case 'g':
      case 'G':
        return aConversion.length == "L" ? put(aConversion, va_arg(*mArguments, long double))
                                         : put(aConversion, va_arg(*mArguments, double));
      case 'c':
        return aConversion.length == "l" ? put(aConversion, va_arg(*mArguments, std::wint_t))
                                         : put(aConversion, va_arg(*mArguments, int));
      case 's':
        return printString(aConversion);
      case 'p':
        return put(aConversion, va_arg(*mArguments, void*));
      case 'n':
        (void)va_arg(*mArguments, void*);
        return true;
      case '%':
        mText += '%';
        return true;
      default:
        return false;
    }
  }

  // Signed and unsigned types of one size travel alike.
  bool printInteger(Conversion const& aConversion) {
    std::string const& length = aConversion.length;
    if (length == "l") {
      return put(aConversion, va_arg(*mArguments, long));
    }
    if (length == "ll" || length == "q") {
      return put(aConversion, va_arg(*mArguments, long long));
    }
    if (length == "j") {
      return put(aConversion, va_arg(*mArguments, std::intmax_t));
    }
    if (length == "z") {
      return put(aConversion, va_arg(*mArguments, std::size_t));
    }
    if (length == "t") {
      return put(aConversion, va_arg(*mArguments, std::ptrdiff_t));
    }
    return (length.empty() || length == "h" || length == "hh") &&
           put(aConversion, va_arg(*mArguments, int));
  }

  bool printString(Conversion aConversion) {
    if (aConversion.precision < 0) {
      aConversion.precision = LogFormat::cMostOfValue;
    }
    if (aConversion.length.empty()) {
      char const* const value = va_arg(*mArguments, char const*);
      return put(aConversion, value != nullptr ? value : "(null)");
    }
    wchar_t const* const value = va_arg(*mArguments, wchar_t const*);
    return aConversion.length == "l" && put(aConversion, value != nullptr ? value : L"(null)");
  }

  template <typename Value>
  bool put(Conversion const& aConversion, Value aValue) {
    std::string conversion = "%" + aConversion.flags;
    if (aConversion.width != -1) {
      conversion += std::to_string(aConversion.width);
    }
    if (aConversion.precision != -1) {
      conversion += '.' + std::to_string(aConversion.precision);
    }
    conversion += aConversion.length;
    conversion += aConversion.type;
    // Holds the longest double with the longest precision.
    char text[6 * LogFormat::cMostOfValue];
    int const size = std::snprintf(text, sizeof text, conversion.c_str(), aValue);
    if (size < 0) {
      mText += "(?)";
      return true;
    }
    mText.append(text, std::min({static_cast<std::size_t>(size), sizeof text - 1,
                                 static_cast<std::size_t>(LogFormat::cMostOfValue)}));
    return true;
  }

  char const* mFormat;
  std::va_list* mArguments;
  std::string mText;
};

// NOLINTEND(clang-analyzer-valist.Uninitialized)

}  // namespace

std::string LogFormat::Format(char const* aFormat, std::va_list aArguments) {
  std::va_list arguments;
  va_copy(arguments, aArguments);
  std::string text = Formatter(aFormat, &arguments).format();
  va_end(arguments);
  return text;
}

}  // namespace Zelv::Platform
