// Whether the person wants things on the screen to keep still.
#pragma once

#include "base/Environment.h"

namespace vmr {

/// VMR_REDUCED_MOTION says so with anything but "0", and the contrary with "0". Without it the system's own setting
/// holds: the one of Windows or macOS, elsewhere what the desktop keeps in its files (KDE's length of animations, GTK's
/// switch for them).
bool wantsReducedMotion(const EnvironmentLookup& lookup);

}  // namespace vmr
