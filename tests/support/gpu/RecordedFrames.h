// Reads recorded frames: their draws, what each refers to, and where that lands on the screen.
#pragma once

#include <array>
#include <cstring>
#include <vector>

#include "gpu/FrameRecorder.h"
#include "gpu/RecordedFrame.h"

namespace vmr::test {

/// The newest frame that was taken from a recorder.
class RecordedFrames {
 public:
    /// One draw, with its uniforms at hand. Belongs to the frame it came from.
    struct DrawCall {
        Pipeline pipeline = Pipeline::flat;
        Primitive primitive = Primitive::triangles;
        std::int32_t source = RecordedFrame::fromStream;
        std::size_t offset = 0, count = 0;  ///< bytes into what it draws from, and vertices
        std::array<float, 8> uniforms{};
        bool retained = false, opaque = false;
        PixelRect clip;
        bool withView() const { return pipeline != Pipeline::flat && pipeline != Pipeline::text; }
    };

    /// False, with nothing changed, when no frame was recorded since the last call.
    bool take(FrameRecorder& gpu) {
        if (!gpu.swapFrame(frame)) return false;
        draws.clear();
        for (const RecordedFrame::Draw& draw : frame.draws)
            draws.push_back({draw.pipeline, draw.primitive, draw.source, draw.byteOffset, draw.vertexCount,
                             frame.uniforms.at(draw.uniforms), draw.source != RecordedFrame::fromStream, draw.opaque,
                             frame.clips.at(draw.clip)});
        return true;
    }

    RecordedFrame frame;
    std::vector<DrawCall> draws;

    template <class Vertex>
    std::vector<Vertex> vertices(const DrawCall& call) const {
        const auto& bytes =
            call.retained ? frame.retained.at(static_cast<std::size_t>(call.source))->bytes : frame.stream;
        std::vector<Vertex> list(call.count);
        std::memcpy(list.data(), bytes.data() + call.offset, call.count * sizeof(Vertex));
        return list;
    }

    /// Where a place in data space or in pixels lands, in points from the view's top left.
    std::array<double, 2> screen(const DrawCall& call, float x, float y) const {
        const float clipX = x * call.uniforms[0] + call.uniforms[1], clipY = y * call.uniforms[2] + call.uniforms[3];
        return {(clipX + 1.0) * 0.5 * frame.width, (1.0 - clipY) * 0.5 * frame.height};
    }
};

}  // namespace vmr::test
