#include "apps/zelvctl/ProgressBar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "apps/zelvctl/PrintableText.h"

namespace ZelvCtl {

namespace {

constexpr std::size_t usualWidth = 80;
constexpr std::size_t longestName = 30;
constexpr std::size_t longestBar = 40;
constexpr std::size_t shortestBar = 5;

bool continuesCharacter(char aByte) {
  return (static_cast<unsigned char>(aByte) & 0xc0U) == 0x80;
}

std::size_t columnsOf(std::string const& aText) {
  return aText.size() -
         static_cast<std::size_t>(std::count_if(aText.begin(), aText.end(), continuesCharacter));
}

/// Without splitting a character.
std::string cut(std::string const& aText, std::size_t aColumns) {
  std::size_t at = 0;
  for (std::size_t columns = 0; at < aText.size(); ++at) {
    columns += continuesCharacter(aText[at]) ? 0 : 1;
    if (columns > aColumns) {
      break;
    }
  }
  return aText.substr(0, at);
}

std::string sizeText(std::uint64_t aBytes) {
  static constexpr std::array<char const*, 7> units = {"B",   "KiB", "MiB", "GiB",
                                                       "TiB", "PiB", "EiB"};
  auto size = static_cast<double>(aBytes);
  std::size_t unit = 0;
  while (size >= 1024) {
    size /= 1024;
    ++unit;
  }
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), unit == 0 ? "%.0f %s" : "%.1f %s", size, units[unit]);
  return text.data();
}

std::string barOf(unsigned aPercent, std::size_t aColumns) {
  std::size_t const full = aColumns * aPercent / 100;
  return "[" + std::string(full, '#') + std::string(aColumns - full, '-') + "] ";
}

}  // namespace

ProgressBar::ProgressBar(std::ostream& aOut, Width aWidth)
    : mOut(aOut), mWidth(std::move(aWidth)) {}

void ProgressBar::begin(std::string const& aName, std::uint64_t aSize) {
  mName = cut(PrintableText::masked(aName), longestName);
  mSize = aSize;
  mDone = 0;
  draw();
}

// A line for every piece would be what takes the longest.
void ProgressBar::advance(std::uint64_t aBytes) {
  mDone += aBytes;
  if (percent() != mShownPercent) {
    draw();
  }
}

unsigned ProgressBar::percent() const {
  if (mDone >= mSize) {
    return 100;
  }
  return static_cast<unsigned>(static_cast<double>(mDone) * 100 / static_cast<double>(mSize));
}

/// One column stays free: a line that fills all of them would go on in the next.
std::string ProgressBar::line() const {
  std::size_t const width = std::max<std::size_t>(mWidth(), 1) - 1;
  std::string const head = mName + " ";
  std::string const tail = std::to_string(percent()) + " % of " + sizeText(mSize);
  std::size_t const others = columnsOf(head) + columnsOf(tail) + 3;
  std::size_t const room = std::min(longestBar, width - std::min(width, others));
  return cut(head + (room >= shortestBar ? barOf(percent(), room) : "") + tail, width);
}

void ProgressBar::draw() {
  std::string const text = line();
  std::size_t const columns = columnsOf(text);
  std::string const rest(mShownColumns - std::min(mShownColumns, columns), ' ');
  mOut << '\r' << text << rest << std::flush;
  mShownColumns = std::max(columns, mShownColumns);
  mShownPercent = percent();
}

void ProgressBar::clear() {
  if (mShownColumns > 0) {
    mOut << '\r' << std::string(mShownColumns, ' ') << '\r' << std::flush;
    mShownColumns = 0;
  }
}

std::size_t ProgressBar::widthOfTerminal() {
  winsize size{};
  bool const isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : usualWidth;
}

}  // namespace ZelvCtl
