// What the window's parts need once per process.
#pragma once

#include <filesystem>

#include "base/RenderDevice.h"

class QQmlEngine;
class QQuickWindow;

namespace vmr {

/// Asks for four samples a pixel, or for one where the processor draws (`VMR_SAMPLES` overrules), for an opaque surface
/// and native text. Before the application object is made.
void prepareGraphics(const RasteriserRecord& record);

/// The record for the graphics interface that the environment asks for, in a file of `folder`.
RasteriserRecord rasteriserRecord(const std::filesystem::path& folder);

/// Keeps in `record` what draws the window, once it has drawn.
void rememberRasteriser(QQuickWindow& window, const RasteriserRecord& record);

/// Qt waits 5 ms from the wish for a frame to the frame, to hear the input that came meanwhile first. Charts ask for
/// the next frame when the last is shown, so a fast screen has no 5 ms to spare. After the application object is made,
/// before the first window.
void prepareUpdates();

/// Registers the fonts and makes Saira the application's font. After the application object is made.
void registerFonts();

/// Makes `import Velmora` work in `engine`.
void registerQml(QQmlEngine& engine);

}  // namespace vmr
