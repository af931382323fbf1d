// The module of the 3D view.
#pragma once

namespace vmr {

/// Makes `import Velmora.Surface3D` work, once for the process.
void registerSurface3D();

}  // namespace vmr
