#include "ui/surface3d/Surface3DModule.h"

#include <QtCore/qglobal.h>

void qml_register_types_Velmora_Surface3D();

// The macro must stand outside of any namespace.
static void keepSurface3DResources() {
    Q_INIT_RESOURCE(qmake_Velmora_Surface3D);
    Q_INIT_RESOURCE(vmr_surface3d_raw_qml_0);
}

namespace vmr {

void registerSurface3D() {
    keepSurface3DResources();
    qml_register_types_Velmora_Surface3D();
}

}  // namespace vmr
