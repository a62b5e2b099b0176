#pragma once

#include <string>

#include "zelv/interfaces/GUID.h"
#include "zelv/platform/Export.h"

namespace Zelv {

/// The root of all interfaces.
///
/// Every interface derives from its parent by public virtual inheritance, so that an object of many
/// interfaces holds one IBase and each of them is reached from it by dynamic_cast.
class ZELV_EXPORT IBase {
 public:
  /// The object's name; empty unless set. Nothing in the library depends on it.
  virtual std::string getName();

  /// Sets the object's name. Not guarded: callers on several threads keep their own order.
  virtual void setName(std::string const& aName);

  virtual ~IBase();

 private:
  std::string mName;
};

/// An identifier is made at load time in every unit that includes its interface, so that a static
/// object of that unit can use it in its own constructor.
GUID const IID_IBase("2cb63c08-01e0-41cd-950e-1566f18e0983");

}  // namespace Zelv
