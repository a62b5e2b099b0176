#pragma once

#include "zelv/Zelv.h"

namespace ZelvTv {

/// Holds the library up for a scope.
class Library {
 public:
  Library() : mUp(Zelv::InterfaceFactory::initialize()) {}
  Library(Library const&) = delete;
  Library& operator=(Library const&) = delete;
  ~Library() { Zelv::InterfaceFactory::terminate(); }

  /// False when the start failed; the log says why.
  bool IsUp() const { return mUp; }

  /// An interface of the running library, valid as long as this object.
  template <typename Interface>
  Interface& Get(Zelv::GUID const& aId) const {
    return dynamic_cast<Interface&>(*Zelv::InterfaceFactory::getInterface(aId));
  }

 private:
  bool const mUp;
};

}  // namespace ZelvTv
