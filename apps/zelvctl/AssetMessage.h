#pragma once

#include <string>
#include <vector>

#include "apps/zelvctl/Options.h"

namespace ZelvCtl {

/// Writes the request for assets, all that was asked for in one.
class AssetMessage {
 public:
  /// Sets answer no more at a time.
  static constexpr std::size_t MaxThings = 1024;

  /// @param aOptions  packages, and assets in the one package there is or, without any, anywhere.
  ///                  Nothing in them needs to be escaped.
  AssetMessage(std::string const& aSenderId, Options const& aOptions);

  /// What answers quote.
  std::string const& requestId() const { return mRequestId; }

  /// What is asked for, in words, in the order in which it is answered.
  std::vector<std::string> const& things() const { return mThings; }

  std::string text() const;

 private:
  void ask(std::string const& aElement, std::string const& aAttribute,
           std::vector<std::string> const& aValues, std::string const& aPlace);
  void askInPackage(std::string const& aAttribute, std::string const& aPackage,
                    std::string const& aWords, Options const& aOptions);

  std::string const mSenderId;
  std::string const mRequestId;
  std::vector<std::string> mThings;
  std::string mQuestions;
};

}  // namespace ZelvCtl
