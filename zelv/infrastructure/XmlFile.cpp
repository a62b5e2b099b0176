#include "zelv/infrastructure/XmlFile.h"

#include <cstddef>
#include <cstring>

#include "zelv/infrastructure/XmlGate.h"
#include "zelv/platform/PCFile.h"
#include "zelv/platform/PCRealDebug.h"

namespace Zelv::Infrastructure {

namespace {

/// Reads until the end, or until aText holds more than a file may.
bool readAll(PCFile& aFile, std::string& aText) {
  std::size_t size = 0;
  while (size <= XmlGate::MaxFile) {
    if (aText.size() == size) {
      aText.resize(size + size / 2 + 1);
    }
    long const got = aFile.Read(aText.data() + size, aText.size() - size);
    if (got < 0) {
      return false;
    }
    if (got == 0) {
      break;
    }
    size += static_cast<std::size_t>(got);
  }
  aText.resize(size);
  return true;
}

}  // namespace

bool XmlFile::read(std::string const& aPath, std::string& aText) {
  PCFile file;
  if (!file.Create(aPath.c_str(), 0)) {
    return false;
  }
  long long const size = file.Seek(0, PCFile::End);
  if (size <= 0 || file.Seek(0, PCFile::Begin) != 0) {
    return false;
  }
  // One byte more than there should be, so that the end is seen by the first read.
  bool const fits = size <= static_cast<long long>(XmlGate::MaxFile);
  aText.resize(fits ? static_cast<std::size_t>(size) + 1 : 0);
  if (fits && !readAll(file, aText)) {
    return false;
  }
  if (!fits || aText.size() > XmlGate::MaxFile) {
    PCRealDebug::Print(PCRealDebug::Error, "XmlFile::read: File too long: %s", aPath.c_str());
    return false;
  }
  normalise(aText);
  return true;
}

void XmlFile::normalise(std::string& aText) {
  aText.resize(std::strlen(aText.c_str()));
  auto const first = aText.find('\r');
  if (first == std::string::npos) {
    return;
  }
  std::size_t to = first;
  for (std::size_t from = first; from < aText.size(); ++from) {
    bool const isReturn = aText[from] == '\r';
    aText[to++] = isReturn ? '\n' : aText[from];
    // At the end of the text there is a NUL to look at.
    if (isReturn && aText[from + 1] == '\n') {
      ++from;
    }
  }
  aText.resize(to);
}

}  // namespace Zelv::Infrastructure
