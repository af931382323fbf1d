// Whether this machine has a graphics card.
#pragma once

namespace vmr {

/// Whether the system offers programs a device to render with. False means that the processor draws; true may be wrong,
/// as where a display does not use the card. On Linux it looks for a render node; elsewhere it is always true.
bool hasRenderDevice();

}  // namespace vmr
