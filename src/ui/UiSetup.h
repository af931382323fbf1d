// What the window's parts need once per process.
#pragma once

class QQmlEngine;

namespace vmr {

/// Asks for four samples a pixel, an opaque surface and native text. Before the application object is made.
void prepareGraphics();

/// Registers the fonts and makes Saira the application's font. After the application object is made.
void registerFonts();

/// Makes `import Velmora` work in `engine`.
void registerQml(QQmlEngine& engine);

}  // namespace vmr
