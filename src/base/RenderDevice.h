// What draws this machine's windows: a graphics card, or the processor.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// Whether the system offers programs a device to render with. False means that the processor draws; true may be wrong,
/// as where a display does not use the card. On Linux it looks for a render node; elsewhere it is always true.
bool hasRenderDevice();

enum class Rasteriser : unsigned char { card, processor };

/// Samples a pixel for a window to come: 4 where a graphics card draws, 1 where the processor does. `wanted` overrules
/// with "1" or "4"; `found` is what drew the last window, and knows better than a look at the system's devices.
int samplesAPixel(std::string_view wanted, std::optional<Rasteriser> found, bool renderDevice);

/// Remembers from one start of the program to the next what drew its windows, for each graphics interface; that is
/// known for certain only once a window is drawn, and is wanted before it. Wherever the file fails it knows nothing.
class RasteriserRecord {
 public:
    /// `api` is a word of the environment's, "vulkan" or "default"; one of other characters is not remembered, nor
    /// is anything without a file.
    RasteriserRecord(std::filesystem::path file, std::string api) : file_(std::move(file)), api_(std::move(api)) {}

    std::optional<Rasteriser> found() const;
    /// Writes only what is new, and keeps the other interfaces' lines.
    void keep(Rasteriser drew) const;

 private:
    std::filesystem::path file_;
    std::string api_;
};

}  // namespace vmr
