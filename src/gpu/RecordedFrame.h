// A recorded frame as plain data: what the main thread hands to the render node.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "gpu/Gpu.h"
#include "gpu/Vertices.h"

namespace vmr {

/// The bytes of a retained buffer. Shared by the recorder and by the frames that draw from it; the render node drops
/// its GPU copy once nobody holds these any more.
struct RetainedBytes {
    GpuBuffer id = 0;
    std::vector<std::byte> bytes;
};

/// Whole device pixels from the view's top left, within the view.
struct PixelRect {
    int left = 0, top = 0, right = 0, bottom = 0;  ///< the last two are outside
    bool empty() const { return left >= right || top >= bottom; }
    bool operator==(const PixelRect&) const = default;
};

struct RecordedFrame {
    static constexpr std::int32_t fromStream = -1;
    struct Draw {
        Pipeline pipeline = Pipeline::flat;
        Primitive primitive = Primitive::triangles;
        std::int32_t source = fromStream;  ///< index into `retained`, or `fromStream`
        std::uint32_t uniforms = 0;        ///< index into `uniforms`
        std::uint32_t clip = 0;            ///< index into `clips`
        bool opaque = false;               ///< replaces what it covers, without blending
        std::size_t byteOffset = 0;
        std::size_t vertexCount = 0;
    };
    double width = 0, height = 0;  ///< points
    double pixelRatio = 1;
    std::vector<Draw> draws;
    std::vector<std::array<float, 8>> uniforms;
    std::vector<PixelRect> clips;   ///< the first one is the whole view
    std::vector<std::byte> stream;  ///< what the frame wrote into arenas and draws from
    std::vector<std::shared_ptr<const RetainedBytes>> retained;

    /// Empties the lists and keeps their memory.
    void clear() {
        draws.clear();
        uniforms.clear();
        clips.clear();
        stream.clear();
        retained.clear();
    }
};

/// Bytes from one vertex of a pipeline's format to the next.
constexpr std::size_t vertexStride(Pipeline pipeline) {
    switch (pipeline) {
        case Pipeline::box:
            return sizeof(BoxVertex);
        case Pipeline::rounded:
            return sizeof(RoundVertex);
        case Pipeline::candle:
        case Pipeline::dense:
        case Pipeline::crowded:
            return sizeof(CandleVertex);
        case Pipeline::ribbon:
        case Pipeline::dashed:
            return sizeof(LineVertex);
        case Pipeline::disc:
        case Pipeline::triangle:
            return sizeof(MarkerVertex);
        case Pipeline::text:
            return sizeof(TextVertex);
        case Pipeline::flat:
            break;
    }
    return sizeof(ChartVertex);
}

}  // namespace vmr
