#pragma once

#include <exception>
#include <optional>
#include <string>

#include "zelv/infrastructure/GUID.h"

namespace ZelvCtl {

/// Identifiers as texts, which others write in several ways.
class Identifier {
 public:
  /// A new one.
  static std::string create() { return Zelv::Infrastructure::GUID::createGUID().toString(); }

  /// The way in which they are compared; nothing for a text that is none.
  static std::optional<std::string> usualForm(std::string const& aText) {
    try {
      return Zelv::Infrastructure::GUID(aText).toString();
    } catch (std::exception const&) {
      return std::nullopt;
    }
  }
};

}  // namespace ZelvCtl
