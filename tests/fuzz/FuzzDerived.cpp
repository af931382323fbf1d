// Any JSON as the fields of a derived channel and as a payload of the per-minute channels.
#include "FuzzEntry.h"
#include "market/BubbleParser.h"
#include "market/HfHistoryParser.h"
#include "market/LevelsParser.h"
#include "market/MinuteChannel.h"
#include "market/StrikesParser.h"
#include "model/Expirations.h"
#include "model/Gex3D.h"
#include "model/HfpSample.h"

namespace vmr::fuzz {
namespace {

void readFields(const Json& json) {
    DerivedFields fields;
    for (const auto& [key, value] : json.members()) fields.insert_or_assign(std::string(key), json.at(value));
    const FieldView view = FieldView::forExpiration(fields, "2026-06-16");
    UuidSource ids(1);
    require(LevelsParser::parse(view, ids).size() <= 2);
    StrikesParser::totals(view);
    const auto rows = StrikesParser::parse(view);
    for (std::size_t i = 1; i < rows.size(); ++i) require(!strikeBefore(rows[i].strike, rows[i - 1].strike));
    const auto sample = Hfp::sample(rows, Hfp::spotPrice(fields, {}, 1), 0);
    require(sample.has_value() != rows.empty() && (!sample || sample->band.size() <= 5));
    if (const auto spot = Gex3D::spotPrice({}, 1, fields))
        if (const auto surface = Gex3D::build(*spot, fields, 1'781'539'200)) {
            require(surface->strikes.size() >= 2 && surface->net.size() == surface->expLabels.size());
            for (const auto& row : surface->net) require(row.size() == surface->strikes.size());
        }
    std::vector<std::string> expirations;
    for (const JsonView item : view["expirations"].items())
        if (item.isString()) expirations.emplace_back(item.string());
    for (const std::string& iso : computeFutureExps(expirations, 1'781'539'200)) expDteLabel(iso, 1'781'539'200);
}
}  // namespace

void take(std::string_view text) {
    const auto json = Json::parse(text);
    if (!json) return;
    survives([&] { readFields(*json); });
    for (const MinuteChannel* channel : {&bubbleMinutes, &triangleMinutes, &hfHistoryMinutes})
        survives([&] {
            HfByMin minutes;
            RepairTally tally(strict());
            forEachMinute(*json, *channel, tally, [&minutes](std::int64_t minute, JsonView object) {
                require(BubbleParser::bubblePts(object, minute).size() <= 3);
                for (const TrianglePt& point : BubbleParser::trianglePts(object, minute)) require(point.minuteMax > 0);
                minutes[minute] = HfHistoryParser::hfCandle(object);
            });
            keepNewest(minutes, 3);
            require(minutes.size() <= 3);
        });
}

}  // namespace vmr::fuzz
