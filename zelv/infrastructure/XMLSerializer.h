#pragma once

#include <string>

#include "zelv/platform/Export.h"

class TiXmlAttribute;
class TiXmlComment;
class TiXmlDeclaration;
class TiXmlDocument;
class TiXmlElement;
class TiXmlNode;
class TiXmlText;

namespace Zelv::Infrastructure {

/// Writes TinyXML trees as text in the system's own form, and escapes and unescapes entities.
///
/// All serialise operations append to their string and never clear it. Their depth is -1 for the
/// compact form, without line ends and indentation, or the nesting level of what is written, one
/// blank of indentation a level. They follow the tree by recursion: whoever lets trees in from
/// outside bounds their nesting. Nodes MUST NOT be null. No operation fails or logs; all may be
/// called from any thread, as long as nobody changes the tree.
class ZELV_EXPORT XMLSerializer {
 public:
  /// All top-level nodes; in the indented form each is followed by a line end.
  static void serializeDocument(TiXmlDocument const* aDocument, std::string& aResult, int aDepth);

  /// Any kind of node, by the operation of its kind; nodes of the unknown kind are left out.
  static void serializeNode(TiXmlNode const* aNode, std::string& aResult, int aDepth);

  /// One element with all that it holds. Its name is not escaped.
  static void serializeElement(TiXmlElement const* aElement, std::string& aResult, int aDepth);

  /// "name='value'", both escaped; double quotes stand around a value with an apostrophe in it, so
  /// a reader MUST accept both. The depth is not used.
  static void serializeAttribute(TiXmlAttribute const* aAttribute, std::string& aResult,
                                 int aDepth);

  /// A text, escaped; or a CDATA section, as it is, on lines of its own also in the compact form.
  static void serializeText(TiXmlText const* aText, std::string& aResult, int aDepth);

  /// A comment, not escaped, without a line end.
  static void serializeComment(TiXmlComment const* aComment, std::string& aResult, int aDepth);

  /// The XML declaration with version, encoding and standalone, the empty ones too. The depth is
  /// not used.
  static void serializeDeclaration(TiXmlDeclaration const* aDeclaration, std::string& aResult,
                                   int aDepth);

  /// Replaces aOut by aIn with the five entities for & < > " ' and "&#xNN;" for bytes below 0x20.
  /// Bytes from 0x80 on stay. A reference that begins with "&#x" passes as it is, up to its ";".
  /// The two MUST be different strings.
  static void escapeXMLEntities(std::string const& aIn, std::string& aOut);

  /// Replaces aOut by aIn without the five entities, resolved one kind after the other in the order
  /// quot, amp, apos, lt, gt; the two may be the same string. What one replacement brings about is
  /// resolved too, unless its kind has had its turn: "&amp;lt;" gives "<", but "&amp;quot;" gives
  /// "&quot;". Numeric references stay.
  static void unescapeXMLEntities(std::string const& aIn, std::string& aOut);

  /// Replaces one entity by its character throughout aText, until none is left: "&amp;amp;" gives
  /// "&". A text that is none of the five entities is taken out; an empty one changes nothing. The
  /// two MUST be different strings.
  static void unescapeOneXMLEntity(std::string const& aEntity, std::string& aText);
};

}  // namespace Zelv::Infrastructure
