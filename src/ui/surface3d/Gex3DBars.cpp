#include "ui/surface3d/Gex3DBars.h"

#include <QColor>

namespace vmr {

namespace {

constexpr float cube = 100;  // units of the built-in model

QColor colorOf(bool positive, bool apart) {
    if (apart) return positive ? QColor::fromRgbF(0.62F, 0.93F, 0.88F) : QColor::fromRgbF(0.60F, 0.16F, 0.16F);
    return positive ? QColor::fromRgbF(0.149F, 0.651F, 0.604F) : QColor::fromRgbF(0.937F, 0.325F, 0.314F);
}

}  // namespace

void Gex3DBars::setSurface(Gex3DViewModel* surface) {
    if (surface == surface_) return;
    if (surface_) disconnect(surface_, nullptr, this, nullptr);
    surface_ = surface;
    if (surface_) {
        connect(surface_, &Gex3DViewModel::barsChanged, this, [this] { markDirty(); });
        connect(surface_, &Gex3DViewModel::colorSafeChanged, this, [this] { markDirty(); });
    }
    markDirty();
    emit surfaceChanged();
}

QByteArray Gex3DBars::getInstanceBuffer(int* instanceCount) {
    table_.clear();
    int count = 0;
    if (surface_) {
        const QColor plain = colorOf(positive_, surface_->colorSafe()), lit = plain.lighter(130);
        for (const Gex3DViewModel::Bar& bar : surface_->bars()) {
            if (bar.positive != positive_) continue;
            const auto entry = calculateTableEntry(bar.place, bar.size / cube, {}, bar.lit ? lit : plain);
            table_.append(reinterpret_cast<const char*>(&entry), sizeof entry);
            ++count;
        }
    }
    if (instanceCount) *instanceCount = count;
    return table_;
}

}  // namespace vmr
