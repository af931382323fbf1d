// A list of vertices that the GPU keeps from frame to frame.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "chart/Camera.h"
#include "gpu/Gpu.h"

namespace vmr {

/// Copied to the GPU when it is given, and drawn in every frame until another one is. Of a long list only the blocks in
/// view are drawn, so that a pan costs the same over any history. Vertices are those of shapes in
/// data space: all but `ChartVertex` and `TextVertex`. Main thread.
class KeptList {
 public:
    /// `gpu` must outlive it.
    explicit KeptList(Gpu& gpu, Primitive primitive = Primitive::quads) : gpu_(gpu), primitive_(primitive) {}
    ~KeptList();
    KeptList(const KeptList&) = delete;
    KeptList& operator=(const KeptList&) = delete;

    /// Replaces what is kept.
    template <class Vertex>
    void keep(std::span<const Vertex> list);
    template <class Vertex>
    void keep(const std::vector<Vertex>& list) {
        keep(std::span(list));
    }
    /// The same, but does nothing when the very bytes are kept already. Tells whether they were not.
    template <class Vertex>
    bool replace(const std::vector<Vertex>& list);

    std::size_t size() const { return count_; }

    // Nothing for an empty list.
    void draw() const;
    /// The part in view of a list relative to `origin`.
    void drawInView(const Camera& camera, const DataOrigin& origin) const;
    /// Whether any of a list relative to `origin` is in view, beside one that is kept.
    template <class Vertex>
    static bool isInView(const std::vector<Vertex>& list, const Camera& camera, const DataOrigin& origin) {
        return reachOf(std::span(list)).meets(camera, origin);
    }

 private:
    /// What a block spans: bars relative to the list's origin, and points beyond them.
    struct Reach {
        float low = 0, high = 0, points = 0;
        bool meets(const Camera& camera, const DataOrigin& origin) const;
    };
    template <class Vertex>
    static Reach reachOf(std::span<const Vertex> list);
    static constexpr std::size_t blockVertices = 1152;  ///< whole quads or triangles

    Gpu& gpu_;
    Primitive primitive_;
    GpuBuffer buffer_ = 0;
    std::size_t count_ = 0;
    std::size_t stride_ = 0;     ///< bytes of a vertex
    std::vector<Reach> blocks_;  ///< of `blockVertices` each, for lists of several; else it is drawn whole
};

}  // namespace vmr
