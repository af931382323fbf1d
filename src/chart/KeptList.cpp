#include "chart/KeptList.h"

#include <algorithm>
#include <cmath>

#include "gpu/Vertices.h"

namespace vmr {

namespace {
struct Place {
    float bar, points;
};
Place placeOf(const BoxVertex& vertex) { return {vertex.corner[0], 0}; }
Place placeOf(const CandleVertex& vertex) { return {vertex.corner[0], vertex.halfStroke}; }
Place placeOf(const LineVertex& vertex) { return {vertex.pos[0], vertex.halfWidth()}; }
Place placeOf(const MarkerVertex& vertex) { return {vertex.center[0], vertex.radius}; }
}  // namespace

KeptList::~KeptList() {
    if (buffer_ != 0) gpu_.release(buffer_);
}

template <class Vertex>
void KeptList::keep(std::span<const Vertex> list) {
    if (buffer_ != 0) gpu_.release(buffer_);
    buffer_ = list.empty() ? 0 : gpu_.makeBuffer(std::as_bytes(list));
    count_ = list.size();
    stride_ = sizeof(Vertex);
    blocks_.clear();
    if (list.size() <= blockVertices) return;
    for (std::size_t begin = 0; begin < list.size(); begin += blockVertices)
        blocks_.push_back(reachOf(list.subspan(begin, std::min(blockVertices, list.size() - begin))));
}

template <class Vertex>
KeptList::Reach KeptList::reachOf(std::span<const Vertex> list) {
    const Place first = placeOf(list.front());
    Reach reach{first.bar, first.bar, first.points};
    for (const Vertex& vertex : list) {
        const Place place = placeOf(vertex);
        reach.low = std::min(reach.low, place.bar);
        reach.high = std::max(reach.high, place.bar);
        reach.points = std::max(reach.points, place.points);
    }
    return reach;
}

bool KeptList::Reach::meets(const Camera& camera, const DataOrigin& origin) const {
    const double first = camera.firstVisible - origin.bar, last = first + camera.visibleCount;
    const double barsPerPoint = camera.visibleCount / std::max(camera.lastViewW, 1.0);
    const double beyond = (static_cast<double>(points) + 1.0) * barsPerPoint;
    return static_cast<double>(high) + beyond >= first && static_cast<double>(low) - beyond <= last;
}

template <class Vertex>
bool KeptList::replace(const std::vector<Vertex>& list) {
    if (count_ == list.size() && (list.empty() || gpu_.holds(buffer_, std::as_bytes(std::span(list))))) return false;
    keep(list);
    return true;
}

template void KeptList::keep(std::span<const BoxVertex>);
template void KeptList::keep(std::span<const CandleVertex>);
template void KeptList::keep(std::span<const LineVertex>);
template void KeptList::keep(std::span<const MarkerVertex>);
template bool KeptList::replace(const std::vector<LineVertex>&);
template KeptList::Reach KeptList::reachOf(std::span<const CandleVertex>);
template KeptList::Reach KeptList::reachOf(std::span<const LineVertex>);

void KeptList::draw() const {
    if (count_ > 0) gpu_.draw(primitive_, buffer_, 0, count_);
}

// Runs of blocks in view are drawn at once.
void KeptList::drawInView(const Camera& camera, const DataOrigin& origin) const {
    if (blocks_.empty()) return draw();
    const std::size_t blocks = blocks_.size();
    for (std::size_t begin = 0, end; begin < blocks; begin = end) {
        end = begin + 1;
        if (!blocks_[begin].meets(camera, origin)) continue;
        while (end < blocks && blocks_[end].meets(camera, origin)) ++end;
        const std::size_t from = begin * blockVertices, to = std::min(end * blockVertices, count_);
        gpu_.draw(primitive_, buffer_, from * stride_, to - from);
    }
}

}  // namespace vmr
