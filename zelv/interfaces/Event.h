#pragma once

namespace Zelv {

/// An event of the set's own remote control; opaque, and known only as the argument of
/// Core::raiseEvent().
class Event;

}  // namespace Zelv
