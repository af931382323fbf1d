// Which pipeline the next draws use, with its uniforms.
#pragma once

#include <array>
#include <bit>

#include "gpu/Gpu.h"
#include "gpu/Vertices.h"

namespace vmr {

inline void setFlat(Gpu& gpu, const Uniforms& uniforms) {
    gpu.setPipeline(Pipeline::flat);
    gpu.setUniforms(std::bit_cast<std::array<float, 4>>(uniforms));
}

/// For ribbons and markers, which know the view's size in points.
inline void setWithView(Gpu& gpu, Pipeline pipeline, const LineUniforms& uniforms) {
    gpu.setPipeline(pipeline);
    gpu.setUniforms(std::bit_cast<std::array<float, 8>>(uniforms));
}

/// `camera` with the view's size.
inline LineUniforms lineUniforms(const Uniforms& camera, double width, double height) {
    return {camera.xScale,
            camera.xOffset,
            camera.yScale,
            camera.yOffset,
            static_cast<float>(width),
            static_cast<float>(height),
            0.0F,
            0.0F};
}

}  // namespace vmr
