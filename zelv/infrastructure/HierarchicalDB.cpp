#include "zelv/infrastructure/HierarchicalDB.h"

#include <tinyxml.h>

#include <utility>

#include "zelv/infrastructure/PlainXml.h"
#include "zelv/infrastructure/Query.h"
#include "zelv/infrastructure/QueryAnswer.h"
#include "zelv/infrastructure/QueryCache.h"
#include "zelv/infrastructure/XMLSerializer.h"
#include "zelv/infrastructure/XPathDialect.h"
#include "zelv/infrastructure/XPathResult.h"
#include "zelv/infrastructure/XmlFile.h"
#include "zelv/infrastructure/XmlFragment.h"
#include "zelv/infrastructure/XmlGate.h"
#include "zelv/infrastructure/XmlName.h"
#include "zelv/infrastructure/XmlPrinter.h"
#include "zelv/infrastructure/XmlRemoval.h"
#include "zelv/infrastructure/XmlText.h"
#include "zelv/infrastructure/XmlUtf8.h"
#include "zelv/platform/DurableFile.h"
#include "zelv/platform/PCRealDebug.h"
#include "zelv/platform/Shell.h"
#include "zelv/platform/TCAutoLock.h"

namespace Zelv::Infrastructure {

namespace {

/// Parses a text that may come from anywhere. Rows and columns, which the library counts unless its
/// tabs have no width, are of no use here.
/// @return null, or what there is too much of; the document is empty then.
char const* parse(std::string const& aXml, TiXmlDocument& aDocument) {
  XmlText const text(aXml);
  char const* const objection = XmlGate::objection(text.data(), text.size());
  if (objection == nullptr) {
    aDocument.SetTabSize(0);
    aDocument.Parse(text.data(), nullptr, TIXML_ENCODING_UNKNOWN);
  }
  return objection;
}

bool isWhole(TiXmlDocument const& aDocument) {
  return !aDocument.Error() && aDocument.FirstChildElement() != nullptr;
}

bool beginsWithMark(std::string const& aText) {
  return aText.starts_with("\xEF\xBB\xBF");
}

/// A file that would not load again is not worth the one that it replaces.
bool loadsAgain(std::string& aText) {
  XmlFile::normalise(aText);
  TiXmlDocument document;
  return parse(aText, document) == nullptr && isWhole(document);
}

/// How many elements stand around what an element holds.
int levelBelow(TiXmlNode const* aElement) {
  int level = 0;
  for (; aElement != nullptr && aElement->ToElement() != nullptr; aElement = aElement->Parent()) {
    ++level;
  }
  return level;
}

TiXmlText* firstText(TiXmlElement& aElement) {
  TiXmlNode* child = aElement.FirstChild();
  while (child != nullptr && child->ToText() == nullptr) {
    child = child->NextSibling();
  }
  return child != nullptr ? child->ToText() : nullptr;
}

int countAttributes(TiXmlElement const& aElement) {
  int count = 0;
  for (auto const* at = aElement.FirstAttribute(); at != nullptr; at = at->Next()) {
    ++count;
  }
  return count;
}

int refuse(char const* aObjection) {
  PCRealDebug::Print(PCRealDebug::Error, "HierarchicalDB::setContent: Refused: %s.", aObjection);
  return -1;
}

}  // namespace

HierarchicalDB::HierarchicalDB() = default;

HierarchicalDB::HierarchicalDB(OfOneThread) : mOfOneThread(true) {
  static thread_local QueryCache queries;
  mQueries = &queries;
}

HierarchicalDB::~HierarchicalDB() = default;

int HierarchicalDB::loadFromFile(std::string const& aPath) {
  reset();
  mDocument->SetValue(aPath);
  std::string text;
  char const* objection = nullptr;
  bool good = XmlFile::read(aPath, text);
  if (good) {
    objection = load(text);
    good = objection == nullptr && !mDocument->Error();
  }
  if (objection != nullptr) {
    PCRealDebug::Print(PCRealDebug::Error, "HierarchicalDB::loadFromFile: Refused: %s.", objection);
  }
  PCRealDebug::Print(PCRealDebug::Notable,
                     "HierarchicalDB::loadFromFile: TXML LoadFile returned %s .",
                     good ? "true" : "false");
  mLoaded = good && root() != nullptr;
  if (!mLoaded) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "HierarchicalDB::loadFromFile: Failed to load XML file: %s ", aPath.c_str());
  }
  return mLoaded ? 0 : -1;
}

int HierarchicalDB::loadFromString(std::string const& aXml) {
  if (mOfOneThread && loadPlain(aXml)) {
    return 0;
  }
  reset();
  char const* const objection = load(aXml);
  if (objection != nullptr) {
    PCRealDebug::Print(PCRealDebug::Error, "HierarchicalDB::loadFromString: Refused: %s.",
                       objection);
  }
  // Text behind the first element, or an error within it, is no failure.
  mLoaded = root() != nullptr;
  if (!mLoaded) {
    PCRealDebug::Print(PCRealDebug::Error,
                       "HierarchicalDB::loadFromString: Failed to load XML string. kemmo 1104 : %s",
                       aXml.c_str());
  }
  return mLoaded ? 0 : -1;
}

bool HierarchicalDB::isLoaded() {
  return mLoaded;
}

int HierarchicalDB::saveToFile(std::string const& aPath) {
  TCAutoLock lock(mLock);
  buildTree();
  // The text is checked before the file is touched: what may not replace a file is not written.
  std::string text;
  bool const saved = print(text) && Platform::DurableFile::Write(aPath, text.data(), text.size());
  Platform::Shell::Run("sync");
  if (!saved) {
    PCRealDebug::Print(PCRealDebug::Error, "HierarchicalDB::saveToFile: Failed to save XML file.");
    return -1;
  }
  return 0;
}

int HierarchicalDB::serialize(std::string& aOut, int aDepth) {
  TCAutoLock lock(mLock);
  if (!mLoaded) {
    PCRealDebug::Print(PCRealDebug::Warning, "HierarchicalDB::serialize: Document not loaded.");
    return -1;
  }
  buildTree();
  XMLSerializer::serializeDocument(mDocument.get(), aOut, aDepth);
  return 0;
}

int HierarchicalDB::getContent(std::string const& aXPath, std::string& aResult) {
  TCAutoLock lock(mLock);
  if (!mLoaded) {
    PCRealDebug::Print(PCRealDebug::Error, "HierarchicalDB::getContent: aXPath='%s'.",
                       aXPath.c_str());
    PCRealDebug::Print(PCRealDebug::Warning, "HierarchicalDB::getContent: Document not loaded.");
    PCRealDebug::Print(PCRealDebug::Trace, "HierarchicalDB::getContent: Exit.");
    aResult.clear();
    return -1;
  }
  aResult.clear();
  if (mPlain) {
    PlainXml::Found const found = mPlain->content(aXPath, aResult);
    if (found != PlainXml::Found::Unasked) {
      return found == PlainXml::Found::Yes ? 0 : -1;
    }
    buildTree();
  }
  if (mQueries == nullptr) {
    mOwnQueries = std::make_unique<QueryCache>();
    mQueries = mOwnQueries.get();
  }
  return answer(mQueries->find(aXPath), aResult);
}

int HierarchicalDB::answer(Query& aQuery, std::string& aResult) const {
  XPathResult matches;
  if (!aQuery.expression().evaluate(root(), matches)) {
    return -1;
  }
  if (!matches.empty()) {
    if (QueryAnswer::make(matches, aQuery.asksNames(), aResult)) {
      return 0;
    }
    PCRealDebug::Print(PCRealDebug::Error,
                       "HierarchicalDB::getContent: Result too long. aXPath='%s'.",
                       aQuery.path().c_str());
    std::string().swap(aResult);
    return -1;
  }
  if (aQuery.parent() != nullptr) {
    aQuery.parent()->evaluate(root(), matches);
  }
  return matches.empty() ? -1 : 0;
}

int HierarchicalDB::setContent(std::string const& aXPath, std::string const& aValue, bool aCreate) {
  TCAutoLock lock(mLock);
  if (!mLoaded) {
    PCRealDebug::Print(PCRealDebug::Warning, "HierarchicalDB::setContent: Document not loaded.");
    return -1;
  }
  buildTree();
  std::string path = aXPath;
  if (path.empty() || path.front() != '/') {
    path.insert(0, 1, '/');
  }
  auto const end = path.rfind('/');
  std::string const leaf = path.substr(end + 1);
  TiXmlElement* const found = target(path.substr(0, end));
  int const result = found != nullptr ? write(*found, path, leaf, aValue, aCreate) : -1;
  if (result == 0) {
    PCRealDebug::Print(PCRealDebug::Trace, "HierarchicalDB::setContent: Exit.");
  }
  return result;
}

void HierarchicalDB::translateXPath(std::string& aPath) {
  XPathDialect::translate(aPath);
}

void HierarchicalDB::separateXPath(std::string aPredicate, std::string& aName,
                                   std::string& aCondition) {
  XPathDialect::separate(aPredicate, aName, aCondition);
}

bool HierarchicalDB::loadPlain(std::string const& aXml) {
  auto plain = std::make_unique<PlainXml>(aXml);
  if (!plain->isPlain()) {
    return false;
  }
  forget();
  mPlain = std::move(plain);
  mLoaded = true;
  return true;
}

void HierarchicalDB::buildTree() {
  if (mPlain) {
    mDocument = std::make_unique<TiXmlDocument>();
    load(mPlain->text());
    mPlain.reset();
  }
}

void HierarchicalDB::reset() {
  forget();
  mDocument = std::make_unique<TiXmlDocument>();
}

void HierarchicalDB::forget() {
  mPlain.reset();
  mDocument.reset();
  mLoaded = false;
  mMarked = false;
  mRoom.reset();
}

char const* HierarchicalDB::load(std::string const& aXml) {
  mMarked = beginsWithMark(aXml);
  return parse(aXml, *mDocument);
}

TiXmlElement* HierarchicalDB::root() const {
  return mDocument->FirstChildElement();
}

bool HierarchicalDB::print(std::string& aText) const {
  if (!mDocument) {
    return false;
  }
  if (!XmlPrinter::print(*mDocument, mMarked, XmlGate::MaxFile, aText)) {
    PCRealDebug::Print(PCRealDebug::Error, "HierarchicalDB::saveToFile: Refused: %s.",
                       "document too long");
    return false;
  }
  return loadsAgain(aText);
}

TiXmlElement* HierarchicalDB::target(std::string aPath) const {
  XPathDialect::translate(aPath);
  XPathResult matches;
  XPathExpression(aPath).evaluate(root(), matches);
  if (matches.empty() || matches[0].isAttribute()) {
    return nullptr;
  }
  return matches[0].node()->ToElement();
}

int HierarchicalDB::write(TiXmlElement& aTarget, std::string const& aPath, std::string const& aLeaf,
                          std::string const& aValue, bool aCreate) {
  if (aLeaf == "text()") {
    return writeText(aTarget, aValue);
  }
  if (aLeaf.starts_with('@')) {
    return writeAttribute(aTarget, aLeaf.substr(1), aValue, aCreate);
  }
  return writeElements(aTarget, aPath, aValue);
}

int HierarchicalDB::writeText(TiXmlElement& aTarget, std::string const& aValue) {
  char const* const objection = objectionTo(aValue);
  if (objection != nullptr) {
    return refuse(objection);
  }
  TiXmlText* text = firstText(aTarget);
  if (text == nullptr) {
    aTarget.LinkEndChild(new TiXmlText(aValue));
    return 0;
  }
  if (text->CDATA() && aValue.find("]]>") != std::string::npos) {
    // It would end the section, and what follows would be read as markup.
    text->SetCDATA(false);
  }
  text->SetValue(aValue);
  return 0;
}

int HierarchicalDB::writeAttribute(TiXmlElement& aTarget, std::string const& aName,
                                   std::string const& aValue, bool aCreate) {
  bool const isNew = aTarget.Attribute(aName) == nullptr;
  if (isNew && (!aCreate || !XmlName::is(aName) || XmlUtf8::beginsWithMark(aName))) {
    // The library writes any name into a file, but reads back none with a blank in it.
    PCRealDebug::Print(PCRealDebug::Error,
                       "HierarchicalDB::setContent: Attribute '%s' does not exist.", aName.c_str());
    return -1;
  }
  if (isNew && countAttributes(aTarget) >= XmlGate::MaxAttributes) {
    return refuse("too many attributes in one element");
  }
  // Escaped here, unlike a text, and once more when it is printed; reading unescapes until nothing
  // is left to unescape.
  std::string value;
  XMLSerializer::escapeXMLEntities(aValue, value);
  char const* const objection = objectionTo(value);
  if (objection != nullptr) {
    return refuse(objection);
  }
  aTarget.SetAttribute(aName, value);
  return 0;
}

int HierarchicalDB::writeElements(TiXmlElement& aTarget, std::string aPath,
                                  std::string const& aXml) {
  XPathDialect::translate(aPath);
  XmlText const text(aXml);
  char const* objection = XmlGate::objection(text.data(), text.size(), levelBelow(&aTarget));
  if (objection != nullptr) {
    return refuse(objection);
  }
  XmlFragment const fragment(text);
  objection = objectionTo(fragment);
  if (objection != nullptr) {
    return refuse(objection);
  }
  XPathResult matches;
  if (!XPathExpression(aPath).evaluate(root(), matches)) {
    return refuse("the path");
  }
  XmlRemoval removal(matches, root());
  if (!fragment.empty() && removal.takes(&aTarget)) {
    return refuse("the value would be linked into what it replaces");
  }
  removal.run();
  fragment.linkInto(aTarget);
  return 0;
}

char const* HierarchicalDB::objectionTo(std::string const& aText) {
  if (!XmlUtf8::isGood(aText) && isUtf8()) {
    return "broken UTF-8";
  }
  return mRoom.take(*mDocument, XmlRoom::CostOfNode + aText.size()) ? nullptr : "document too long";
}

char const* HierarchicalDB::objectionTo(XmlFragment const& aFragment) {
  if (isUtf8() && !aFragment.isGoodUtf8()) {
    return "broken UTF-8";
  }
  return mRoom.take(*mDocument, aFragment.cost()) ? nullptr : "document too long";
}

bool HierarchicalDB::isUtf8() const {
  return XmlUtf8::isUsedBy(*mDocument, mMarked);
}

}  // namespace Zelv::Infrastructure
