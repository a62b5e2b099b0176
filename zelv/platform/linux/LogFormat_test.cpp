#include "zelv/platform/linux/LogFormat.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

using Zelv::Platform::LogFormat;

// Without the compiler's check of formats: some of these are wrong on purpose.
std::string format(char const* aFormat, ...) {
  std::va_list arguments;
  va_start(arguments, aFormat);
  std::string text = LogFormat::Format(aFormat, arguments);
  va_end(arguments);
  return text;
}

template <typename... Values>
void expectAsPrintf(char const* aFormat, Values... aValues) {
  char expected[8192];
  std::snprintf(expected, sizeof expected, aFormat, aValues...);
  EXPECT_EQ(expected, format(aFormat, aValues...)) << aFormat;
}

TEST(LogFormat, FormatsAsPrintfDoes) {
  expectAsPrintf("plain, 100%%", 0);
  expectAsPrintf("%d %i %u %x %X %o", -1, 2, 3U, 0xabcU, 0xabcU, 8U);
  expectAsPrintf("%hhd %hd %ld %lld", 300, 70000, -5L, -6LL);
  expectAsPrintf("%lu %llu %zu %jd %td", 5UL, 6ULL, sizeof(int), std::intmax_t{-1},
                 std::ptrdiff_t{-2});
  expectAsPrintf("%5d|%-5d|%05d|%+d|% d|%#x|%.3d", 1, 2, 3, 4, 5, 6U, 7);
  expectAsPrintf("%*d|%-*d|%.*d|%*d", 4, 1, 4, 2, 3, 3, -4, 4);
  expectAsPrintf("%f %.2f %e %g %a %10.3f|", 1.5, 2.345, 3e10, 0.0001, 1.0, 3.14159);
  expectAsPrintf("%Lf", 1.25L);
  expectAsPrintf("%c%5c|", 'a', 'b');
  expectAsPrintf("%s|%5s|%-5s|%.2s|%.*s|%.0s|%.s", "a", "b", "c", "defg", 3, "hijkl", "m", "n");
  expectAsPrintf("%.*s", -1, "whole");
  expectAsPrintf("%p %p", static_cast<void const*>("x"), static_cast<void const*>(nullptr));
  expectAsPrintf("%ls", L"wide");
}

TEST(LogFormat, CutsEveryValueAt1024Bytes) {
  std::string const longer(2000, 'x');
  std::string const cut(1024, 'x');
  EXPECT_EQ(cut, format("%s", longer.c_str()));
  EXPECT_EQ(cut, format("%.1500s", longer.c_str()));
  EXPECT_EQ(cut, format("%.*s", 1500, longer.c_str()));
  EXPECT_EQ(cut, format("%.99999999999999999999s", longer.c_str()));
  EXPECT_EQ(1024U, format("%2000d", 1).size());
  EXPECT_EQ(1024U, format("%-2000s", "a").size());
  EXPECT_EQ(1024U, format("%.2000d", 1).size());
  EXPECT_EQ(1024U, format("%.2000Lf", LDBL_MAX).size());
  EXPECT_EQ(cut + "," + cut, format("%s,%s", longer.c_str(), longer.c_str()));
}

TEST(LogFormat, DoesNotReadBehindThePrecision) {
  char const unterminated[3] = {'a', 'b', 'c'};
  EXPECT_EQ("abc", format("%.3s", unterminated));
  EXPECT_EQ("ab", format("%.*s", 2, unterminated));
}

TEST(LogFormat, ShowsNullStrings) {
  EXPECT_EQ("(null)", format("%s", static_cast<char const*>(nullptr)));
  EXPECT_EQ("  (null)", format("%8s", static_cast<char const*>(nullptr)));
  EXPECT_EQ("(null)", format("%ls", static_cast<wchar_t const*>(nullptr)));
}

TEST(LogFormat, WritesNoCountAndGoesOn) {
  int count = 42;
  EXPECT_EQ("ab7", format("a%nb%d", &count, 7));
  EXPECT_EQ(42, count);
}

TEST(LogFormat, EndsTheLineAsItStandsAtAConversionThatItDoesNotKnow) {
  EXPECT_EQ("1 %y %d", format("%d %y %d", 1, 2));
  EXPECT_EQ("1 %2$s", format("%d %2$s", 1, "x"));
  EXPECT_EQ("%", format("%"));
  EXPECT_EQ("a%-5", format("a%-5"));
  EXPECT_EQ("%.", format("%."));
  EXPECT_EQ("%hhhhd", format("%hhhhd", 1));
  EXPECT_EQ("%Ld", format("%Ld", 1));
}

TEST(LogFormat, ShowsAWideStringThatHasNoBytesByAMark) {
  // In the "C" locale of the tests no such character has bytes.
  EXPECT_EQ("a (?) b", format("a %ls b", L"\u20ac"));
}

}  // namespace
