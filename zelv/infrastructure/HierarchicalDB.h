#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "zelv/infrastructure/XmlRoom.h"
#include "zelv/platform/Export.h"
#include "zelv/platform/PCMutex.h"
#include "zelv/platform/ThreadAnnotations.h"

class TiXmlDocument;
class TiXmlElement;

namespace Zelv::Infrastructure {

class PlainXml;
class Query;
class QueryCache;
class XmlFragment;

/// One XML document, read and written as strings that XPath expressions address.
///
/// Used as a store that lives long, loaded from a file, and as a parser that lives as long as one
/// message. All results are 0 for success and -1 for failure.
///
/// Threads: getContent(), setContent(), serialize() and saveToFile() may be called by any thread,
/// each being one step of its own. Loading takes no lock: while a document is loaded no other
/// thread may use the object. Nothing here calls back.
///
/// Paths are absolute, name the root element as their first step, and get a leading "/" if they
/// have none. Predicates that compare a child's value ("[Name='x']") are rewritten, see
/// translateXPath(); of these only the last of a path is. A predicate that holds no comparison is
/// legal on "*" alone and only with a number above 0; elsewhere it makes std::out_of_range leave
/// getContent() and setContent(), with nothing changed.
///
/// Bounds: a text to load or to link may nest elements 128 deep, give one element 256 attributes
/// and be 16 MiB long, a file 4 MiB; a result of getContent() may be 8 MiB long.
class ZELV_EXPORT HierarchicalDB {
 public:
  /// For a document that lives as long as one message, and on one thread.
  struct OfOneThread {};

  HierarchicalDB();

  /// The tree is built only when it is needed. The paths are those of the messages before it: what
  /// the thread has made of them is used again, since that takes as long as parsing a message. MUST
  /// be used by the thread that makes it alone.
  explicit HierarchicalDB(OfOneThread);
  HierarchicalDB(HierarchicalDB const&) = delete;
  HierarchicalDB& operator=(HierarchicalDB const&) = delete;
  ~HierarchicalDB();

  /// Replaces the document by the one that stands in a file, which must be a regular one.
  /// @return 0 if the whole file was well-formed and held an element; otherwise -1, and the object
  ///         holds no document that could be read.
  int loadFromFile(std::string const& aPath);

  /// Replaces the document by the one in a text.
  /// @return 0 if the text began with an element, even when there is garbage behind it or an error
  ///         within it; otherwise -1, and the object holds no document that could be read.
  int loadFromString(std::string const& aXml);

  /// True after a load that succeeded.
  bool isLoaded();

  /// Writes the document to a file, in the layout of the XML library, and forces it to the storage.
  /// @return -1 when the document cannot be written or could not be loaded again; the file is then
  ///         not fit for use. Callers write to a path of its own and rename.
  int saveToFile(std::string const& aPath);

  /// Appends the document to aOut.
  /// @param aDepth  -1 for the compact form, 0 for the indented one.
  int serialize(std::string& aOut, int aDepth);

  /// Reads what the path addresses into aResult, which is cleared first.
  ///
  /// Several matches are joined as a multi-string (MultiString.h). A last step "text()", "@name" or
  /// "name()" gives bare values; elements come as compact XML. Entities are unescaped in all of it.
  ///
  /// @return 0 if there was a match, or if the last step is "text()" and its parent exists; aResult
  ///         is empty then. Otherwise -1 with an empty aResult.
  int getContent(std::string const& aXPath, std::string& aResult);

  /// Writes below the first match of the path up to its last "/".
  ///
  /// The last step decides: "text()" sets or adds the first text, "@name" an attribute; any other
  /// removes all matches of the whole path and then links aValue, XML text that may be empty, at
  /// the end of the parent's children. The file is not touched.
  ///
  /// @param aCreate  whether an attribute that is missing is added.
  /// @return -1 if the parent does not exist or is no element, or if the attribute is missing and
  ///         aCreate is false; nothing has changed then.
  int setContent(std::string const& aXPath, std::string const& aValue, bool aCreate);

  /// Rewrites a path of the system's dialect into the XPath that is evaluated. Needs no document.
  /// @throws std::out_of_range  for a last predicate without comparison, see above.
  void translateXPath(std::string& aPath);

  /// Cuts a predicate, given from its opening bracket on, before its first character of "!=<>".
  /// @throws std::out_of_range  when there is none.
  void separateXPath(std::string aPredicate, std::string& aName, std::string& aCondition);

 private:
  void forget();
  /// Forgets the document and begins an empty one.
  void reset();
  /// False if the text is none of the kind that needs no tree.
  bool loadPlain(std::string const& aXml);
  /// To be called before the tree is looked at.
  void buildTree();
  /// Null, or what there is too much of.
  char const* load(std::string const& aXml);
  TiXmlElement* root() const;
  bool isUtf8() const;
  /// False if the document cannot be printed, or what was printed would not load again.
  bool print(std::string& aText) const;

  int answer(Query& aQuery, std::string& aResult) const;

  /// The first match, if it is an element.
  TiXmlElement* target(std::string aPath) const;
  int write(TiXmlElement& aTarget, std::string const& aPath, std::string const& aLeaf,
            std::string const& aValue, bool aCreate);
  int writeText(TiXmlElement& aTarget, std::string const& aValue);
  int writeAttribute(TiXmlElement& aTarget, std::string const& aName, std::string const& aValue,
                     bool aCreate);
  int writeElements(TiXmlElement& aTarget, std::string aPath, std::string const& aXml);
  /// Null, or why the document should not take in what is given.
  char const* objectionTo(std::string const& aText);
  char const* objectionTo(XmlFragment const& aFragment);

  PCMutex mLock;
  /// Loads take no lock, so that neither this nor the flag is guarded.
  std::unique_ptr<TiXmlDocument> mDocument;
  bool mLoaded = false;
  bool mOfOneThread = false;
  /// The document while it has no tree.
  std::unique_ptr<PlainXml> mPlain;
  /// Whether the text began with the mark of UTF-8, which the file keeps.
  bool mMarked = false;
  XmlRoom mRoom;
  std::unique_ptr<QueryCache> mOwnQueries ZELV_GUARDED_BY(mLock);
  /// Null until the first is asked; otherwise its own, or those of the thread.
  QueryCache* mQueries ZELV_GUARDED_BY(mLock) = nullptr;
};

}  // namespace Zelv::Infrastructure
