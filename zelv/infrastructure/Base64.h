#pragma once

#include <string>

#include "zelv/platform/Export.h"

namespace Zelv::Infrastructure {

/// Encodes bytes as in RFC 4648, section 4, with padding, except that value 62 is written as a
/// blank where that standard has "+". Peers and stored texts hold the blank.
ZELV_EXPORT std::string base64Encode(std::string const& aData);

/// Checks a Base64 text and tells its length: the result holds as many bytes as the text stands
/// for, all of them zero. Both the blank and "+" count as value 62.
///
/// @throws std::invalid_argument for a length that is no multiple of 4, for a character outside the
/// alphabet, and for more than two "=", wherever these stand.
ZELV_EXPORT std::string base64Decode(std::string const& aText);

}  // namespace Zelv::Infrastructure
