#include "market/BubbleParser.h"

#include <cmath>
#include <string_view>

#include "market/Coerce.h"

namespace vmr::BubbleParser {

std::vector<BubblePt> bubblePts(JsonView object, std::int64_t minuteTs) {
    struct Group {
        std::string_view strike, dominance, positive;
    };
    constexpr Group groups[] = {{"s", "dom", "pos"}, {"s2", "dom2", "pos2"}, {"s3", "dom3", "pos3"}};
    std::vector<BubblePt> points;
    int rank = 0;
    for (const Group& group : groups) {
        if (const auto strike = coerce::dbl(object[group.strike]))
            points.push_back({minuteTs, *strike, coerce::dbl(object[group.dominance]).value_or(0),
                              coerce::boolean(object[group.positive]), rank});
        ++rank;
    }
    return points;
}

std::vector<TrianglePt> trianglePts(JsonView object, std::int64_t minuteTs) {
    const JsonView pairs = object["d"];
    std::vector<TrianglePt> points;
    points.reserve(pairs.isArray() ? pairs.size() : 0);
    double largest = 0;
    for (const JsonView pair : pairs.isArray() ? pairs.items() : JsonView::ItemRange{}) {
        if (!pair.isArray()) return {};
        if (pair.size() < 2) continue;
        auto item = pair.items().begin();
        const auto strike = coerce::dbl(*item);
        const auto net = coerce::dbl(*++item);
        if (!strike || !net) continue;
        if (std::abs(*net) > largest) largest = std::abs(*net);
        points.push_back({minuteTs, *strike, *net, 0});
    }
    if (!(largest > 0)) return {};
    for (TrianglePt& point : points) point.minuteMax = largest;
    return points;
}

}  // namespace vmr::BubbleParser
