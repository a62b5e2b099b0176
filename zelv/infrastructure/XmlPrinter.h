#pragma once

#include <cstddef>
#include <string>

class TiXmlDocument;

namespace Zelv::Infrastructure {

/// Writes a document as the XML library writes it into a file, byte for byte, but into memory: the
/// library reports success on a full disk. Files of the system have always had this layout, which
/// is not that of XMLSerializer.
class XmlPrinter {
 public:
  /// Replaces aResult by the document.
  /// @param aMark   whether it begins with the mark of UTF-8.
  /// @param aLimit  how many bytes there may be; indentation can make much of little.
  /// @return false when there are more; aResult is of no use then.
  static bool print(TiXmlDocument const& aDocument, bool aMark, std::size_t aLimit,
                    std::string& aResult);
};

}  // namespace Zelv::Infrastructure
