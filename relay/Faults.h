// What goes wrong on purpose.
#pragma once

namespace vmr::relay {

/// Switches that hold until they are set back. The relay's thread alone.
struct Faults {
    bool mute = false;    ///< pings stay unanswered
    bool stall = false;   ///< new sockets are accepted and never greeted
    bool refuse = false;  ///< sign-in is refused
    double delay = 0;     ///< real seconds before a greeting or a REST answer
};

}  // namespace vmr::relay
