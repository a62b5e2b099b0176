#include "zelv/platform/linux/ShellText.h"

#include <algorithm>

#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/Shell.h"

namespace Zelv::Platform {
namespace {

// Not isalnum(), whose answer depends on the locale of the host.
bool isPlain(char aCharacter) {
  return (aCharacter >= 'a' && aCharacter <= 'z') || (aCharacter >= 'A' && aCharacter <= 'Z') ||
         (aCharacter >= '0' && aCharacter <= '9') || aCharacter == '.' || aCharacter == '_' ||
         aCharacter == '-' || aCharacter == '/';
}

bool mayStand(char aCharacter) {
  return isPlain(aCharacter) || aCharacter == ' ' || aCharacter == '*' || aCharacter == ';';
}

}  // namespace

bool Shell::IsPlain(std::string const& aName) {
  return !aName.empty() && std::all_of(aName.begin(), aName.end(), isPlain);
}

bool ShellText::Accept(std::string const& aLine) {
  if (std::all_of(aLine.begin(), aLine.end(), mayStand)) {
    return true;
  }
  PCRealDebug::Print(PCRealDebug::Error, "Shell::Run: refused the line '%s'", aLine.c_str());
  return false;
}

}  // namespace Zelv::Platform
