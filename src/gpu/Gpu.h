// The whole graphics interface of the chart. A recorder implements it, and the window replays what it recorded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "gpu/PointRect.h"
#include "gpu/Vertices.h"

namespace vmr {

/// The chart's shader programs. All blend source-alpha over one-minus-source-alpha. Rounded boxes, candles and markers
/// smooth their edges by themselves; boxes and ribbons do where a pixel has one sample, and leave it to the samples
/// elsewhere. Flat shapes have no smooth edges with one sample.
/// - flat: `ChartVertex` with 16 bytes of uniforms;
/// - box: `BoxVertex`, - rounded: `RoundVertex`, - candle, dense, crowded: `CandleVertex`,
///   - ribbon, dashed: `LineVertex`, - disc: `MarkerVertex`, as quads, - triangle: `MarkerVertex`, as triangles, with
///   32 bytes each; dense and crowded are for candles that may share pixels: they leave out what the one before covers,
///   or the two before; dashed finds its dashes for each pixel;
/// - text: `TextVertex` with 16 bytes, sampling the glyph atlas.
enum class Pipeline : std::uint8_t { flat, box, rounded, candle, dense, crowded, ribbon, dashed, disc, triangle, text };
inline constexpr std::size_t pipelineCount = 11;

/// Quads are four vertices each (top left, bottom left, bottom right, top right).
enum class Primitive : std::uint8_t { triangles, lines, quads };

/// Names a buffer; 0 is none.
using GpuBuffer = std::uint32_t;

/// Draws from an arena begin at multiples of this many bytes.
inline constexpr std::size_t arenaAlignment = 256;

/// Records one frame at a time. Main thread. Between `beginFrame` and `endFrame` the calls describe a frame, which the
/// implementation draws afterwards, as often as it needs to.
class Gpu {
 public:
    virtual ~Gpu() = default;

    /// A retained buffer with these bytes (at least one), never changed again.
    virtual GpuBuffer makeBuffer(std::span<const std::byte> bytes) = 0;

    /// Whether a retained buffer holds exactly these bytes, so that nothing new needs to be made.
    virtual bool holds(GpuBuffer buffer, std::span<const std::byte> bytes) const = 0;

    /// A buffer of `size` bytes that the frame writes through `arenaBytes`.
    virtual GpuBuffer makeArena(std::size_t size) = 0;

    /// Where an arena is written; valid until the arena is released.
    virtual std::span<std::byte> arenaBytes(GpuBuffer arena) = 0;

    /// Gives a buffer back. What frames already recorded (the current one included) refer to stays alive for them.
    virtual void release(GpuBuffer buffer) = 0;

    /// Starts a frame for a view of `width` x `height` points at `pixelRatio` device pixels a point.
    virtual void beginFrame(double width, double height, double pixelRatio) = 0;
    /// Covers the view, or the clip rectangle, with a colour of alpha 1, without blending. Keeps pipeline and uniforms.
    virtual void clear(const Rgba& color) = 0;
    /// What is drawn from now on touches only this part of the view, to the nearest device pixel; nothing where it has
    /// no area or is not finite. A frame begins with the whole view.
    virtual void setClip(const PointRect& clip) = 0;
    /// Back to the whole view.
    virtual void resetClip() = 0;
    /// Uniforms have to be set after it, before the next draw.
    virtual void setPipeline(Pipeline pipeline) = 0;
    /// 4 floats (flat, text) or 8 floats (all others); copied.
    virtual void setUniforms(std::span<const float> values) = 0;
    /// Draws `vertexCount` vertices, whole shapes, that begin `byteOffset` bytes into `buffer`, with the pipeline and
    /// uniforms set last. Nothing for 0.
    virtual void draw(Primitive primitive, GpuBuffer buffer, std::size_t byteOffset, std::size_t vertexCount) = 0;
    virtual void endFrame() = 0;
};

}  // namespace vmr
