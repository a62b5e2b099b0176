#pragma once

#include <string>

#include "zelv/interfaces/CommandArgs.h"
#include "zelv/interfaces/IBase.h"

namespace Zelv {

/// Executes the commands of one name.
class ZELV_EXPORT IBaseCommandHandler : public virtual IBase {
 public:
  /// Executes one command. Called on the thread of the command controller, one command at a time.
  ///
  /// @param aCommand  the command's text, an XML element whose name is the command's.
  /// @return the return value; an empty string means that there is none.
  virtual std::string onCommand(std::string const& aCommand, CommandArgs const& aArgs) = 0;
};

GUID const IID_IBaseCommandHandler("b762f013-c6af-42d9-a393-7e29c870dd7c");

}  // namespace Zelv
