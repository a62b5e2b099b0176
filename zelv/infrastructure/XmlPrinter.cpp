#include "zelv/infrastructure/XmlPrinter.h"

#include <tinyxml.h>

namespace Zelv::Infrastructure {

namespace {

constexpr std::size_t cIndent = 4;

/// Gathers the text; once over the limit, what follows is left out.
class Printer {
 public:
  Printer(std::size_t aLimit, std::string& aResult) : mLimit(aLimit), mResult(aResult) {}

  bool isFull() const { return mResult.size() > mLimit; }

  void printNode(TiXmlNode const& aNode, std::size_t aDepth) {
    switch (aNode.Type()) {
      case TiXmlNode::TINYXML_ELEMENT:
        return printElement(*aNode.ToElement(), aDepth);
      case TiXmlNode::TINYXML_TEXT:
        return printText(*aNode.ToText(), aDepth);
      case TiXmlNode::TINYXML_DECLARATION:
        return printDeclaration(*aNode.ToDeclaration());
      case TiXmlNode::TINYXML_COMMENT:
        return printFramed("<!--", aNode, "-->", aDepth);
      case TiXmlNode::TINYXML_UNKNOWN:
        return printFramed("<", aNode, ">", aDepth);
      default:
        return;
    }
  }

 private:
  void indent(std::size_t aDepth) { mResult.append(cIndent * aDepth, ' '); }

  void printElement(TiXmlElement const& aElement, std::size_t aDepth) {
    indent(aDepth);
    mResult.append("<").append(aElement.Value());
    for (TiXmlAttribute const* attribute = aElement.FirstAttribute(); attribute != nullptr;
         attribute = attribute->Next()) {
      mResult += ' ';
      printAttribute(*attribute);
    }
    if (aElement.NoChildren()) {
      mResult += " />";
      return;
    }
    mResult += '>';
    printChildren(aElement, aDepth);
    mResult.append("</").append(aElement.Value()).append(">");
  }

  void printChildren(TiXmlElement const& aElement, std::size_t aDepth) {
    TiXmlNode const* const first = aElement.FirstChild();
    if (first == aElement.LastChild() && first->ToText() != nullptr) {
      printNode(*first, aDepth + 1);
      return;
    }
    for (TiXmlNode const* child = first; child != nullptr && !isFull();
         child = child->NextSibling()) {
      if (child->ToText() == nullptr) {
        mResult += '\n';
      }
      printNode(*child, aDepth + 1);
    }
    mResult += '\n';
    indent(aDepth);
  }

  void printAttribute(TiXmlAttribute const& aAttribute) {
    std::string const& value = aAttribute.ValueStr();
    char const quote = value.find('"') == std::string::npos ? '"' : '\'';
    TiXmlBase::EncodeString(aAttribute.NameTStr(), &mResult);
    mResult += '=';
    mResult += quote;
    TiXmlBase::EncodeString(value, &mResult);
    mResult += quote;
  }

  void printText(TiXmlText const& aText, std::size_t aDepth) {
    if (!aText.CDATA()) {
      TiXmlBase::EncodeString(aText.ValueStr(), &mResult);
      return;
    }
    mResult += '\n';
    indent(aDepth);
    mResult.append("<![CDATA[").append(aText.Value()).append("]]>\n");
  }

  void printDeclaration(TiXmlDeclaration const& aDeclaration) {
    mResult += "<?xml ";
    printPart("version", aDeclaration.Version());
    printPart("encoding", aDeclaration.Encoding());
    printPart("standalone", aDeclaration.Standalone());
    mResult += "?>";
  }

  void printPart(char const* aName, char const* aValue) {
    if (*aValue != '\0') {
      mResult.append(aName).append("=\"").append(aValue).append("\" ");
    }
  }

  void printFramed(char const* aBefore, TiXmlNode const& aNode, char const* aAfter,
                   std::size_t aDepth) {
    indent(aDepth);
    mResult.append(aBefore).append(aNode.Value()).append(aAfter);
  }

  std::size_t const mLimit;
  std::string& mResult;
};

}  // namespace

bool XmlPrinter::print(TiXmlDocument const& aDocument, bool aMark, std::size_t aLimit,
                       std::string& aResult) {
  aResult = aMark ? "\xEF\xBB\xBF" : "";
  Printer printer(aLimit, aResult);
  for (TiXmlNode const* node = aDocument.FirstChild(); node != nullptr && !printer.isFull();
       node = node->NextSibling()) {
    printer.printNode(*node, 0);
    aResult += '\n';
  }
  return !printer.isFull();
}

}  // namespace Zelv::Infrastructure
