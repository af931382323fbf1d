// Operations that the model calls at their moment and whose work is not written yet. Each does nothing; when one gets
// its work, it moves to a file of its own.
#include "model/AppModel.h"

namespace vmr {

// Overlay series, oscillator, session and support/resistance lines
void AppModel::scheduleOverlays() {}
void AppModel::scheduleOscRebuild() {}
void AppModel::rebuildSRLines() {}
void AppModel::rebuildSRLinesIfBarChanged() {}
void AppModel::takeHfHistory(JsonView) {}
void AppModel::takeSupportResistance(JsonView) {}
void AppModel::takeOscillator(JsonView) {}

// Derived fields and markers
void AppModel::updateExpirations() {}
void AppModel::reparseDerived() {}
void AppModel::takeSecondaryGex() {}
void AppModel::takeBubbles(JsonView) {}
void AppModel::takeTriangles(JsonView) {}

// HF pressure and the 3D surface
void AppModel::updateHfpTimer() {}
void AppModel::rebuild3D(bool) {}

// Presence and templates
void AppModel::tellPresence() {}
void AppModel::stopPresence() {}
void AppModel::autoApplyPreferredTemplate() {}

// The trading simulator
void AppModel::simOnTrade(double) {}
void AppModel::simOnQuote(double, double) {}
void AppModel::simSeedLast(double) {}
void AppModel::simUpdateSpecs() {}
void AppModel::simTakeCommission() {}

}  // namespace vmr
