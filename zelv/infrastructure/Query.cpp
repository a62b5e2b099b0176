#include "zelv/infrastructure/Query.h"

#include "zelv/infrastructure/XPathDialect.h"

namespace Zelv::Infrastructure {

namespace {

constexpr std::string_view cNameStep = "/name()";
constexpr std::string_view cTextStep = "/text()";

}  // namespace

/// A path behind its rewriting.
struct Query::Form {
  explicit Form(std::string const& aPath) : text(aPath) {
    if (text.empty() || text.front() != '/') {
      text.insert(0, 1, '/');
    }
    XPathDialect::translate(text);
    // Looked for anywhere, cut at the end: it is meant as a last step only.
    asksNames = text.find(cNameStep) != std::string::npos;
    if (asksNames) {
      text.resize(text.size() - cNameStep.size());
    }
  }

  std::string text;
  bool asksNames;
};

Query::Query(std::string const& aPath) : Query(aPath, Form(aPath)) {}

Query::Query(std::string const& aPath, Form const& aForm)
    : mPath(aPath), mAsksNames(aForm.asksNames), mExpression(aForm.text) {}

XPathExpression const* Query::parent() {
  std::string_view const text = mExpression.text();
  if (!mParent && text.ends_with(cTextStep)) {
    mParent = std::make_unique<XPathExpression>(text.substr(0, text.size() - cTextStep.size()));
  }
  return mParent.get();
}

}  // namespace Zelv::Infrastructure
