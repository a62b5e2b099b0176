#pragma once

#include <string>

namespace Zelv::Infrastructure {

/// The text of an XML file, as the XML library would see it when it read the file itself.
class XmlFile {
 public:
  /// Replaces aText by what a file holds, up to its first NUL and with every line end as a line
  /// feed. @return false for a file that cannot be read, is not a regular one, is empty, or is
  /// longer than XmlGate::MaxFile; the last is logged.
  static bool read(std::string const& aPath, std::string& aText);

  /// Cuts a text at its first NUL and makes every line end in it a line feed.
  static void normalise(std::string& aText);
};

}  // namespace Zelv::Infrastructure
