#include "model/StateRecords.h"

#include <cmath>

namespace vmr::stateRecords {

json number(double value) { return std::isfinite(value) ? json(value) : json(nullptr); }

json number(const std::optional<double>& value) { return value ? number(*value) : json(nullptr); }

json text(const std::optional<std::string>& value) { return value ? json(*value) : json(nullptr); }

json bars(const std::vector<Candle>& series) {
    json out = json::array();
    for (const Candle& bar : series)
        out.push_back(
            {bar.time, number(bar.open), number(bar.high), number(bar.low), number(bar.close), number(bar.volume)});
    return out;
}

json keys(const DerivedFields& fields) {
    json out = json::array();
    for (const auto& [key, value] : fields) out.push_back(key);
    return out;
}

json record(const PriceLevel& level) {
    return {{"label", level.label}, {"price", number(level.price)}, {"r", level.r}, {"g", level.g}, {"b", level.b}};
}

json record(const StrikeRow& row) {
    return {{"strike", number(row.strike)},   {"callGex", number(row.callGex)}, {"putGex", number(row.putGex)},
            {"callDex", number(row.callDex)}, {"putDex", number(row.putDex)},   {"callHf", number(row.callHf)},
            {"putHf", number(row.putHf)},     {"callOI", number(row.callOI)},   {"putOI", number(row.putOI)}};
}

json record(const HudMetrics& hud) {
    return {{"callOI", number(hud.callOI)},
            {"putOI", number(hud.putOI)},
            {"callGex", number(hud.callGex)},
            {"putGex", number(hud.putGex)},
            {"hf", number(hud.hf)}};
}

json record(const Viewport& viewport) {
    return {{"first", number(viewport.first)},
            {"count", number(viewport.count)},
            {"minP", number(viewport.minP)},
            {"maxP", number(viewport.maxP)}};
}

json record(const BubblePt& point) {
    return {{"minuteTs", point.minuteTs},
            {"strike", number(point.strike)},
            {"dom", number(point.dom)},
            {"pos", point.pos},
            {"rank", point.rank}};
}

json record(const TrianglePt& point) {
    return {{"minuteTs", point.minuteTs},
            {"strike", number(point.strike)},
            {"net", number(point.net)},
            {"minuteMax", number(point.minuteMax)}};
}

json record(const OscPt& point) { return {{"t", point.t}, {"v", number(point.v)}}; }

json record(const OscLines& lines) {
    return {{"nq", list(lines.nq)},     {"es", list(lines.es)},   {"vix", list(lines.vix)},
            {"call", list(lines.call)}, {"put", list(lines.put)}, {"net", list(lines.net)}};
}

json record(const SRLevel& level) {
    return {{"i", level.i}, {"label", level.label}, {"price", number(level.price)}, {"triggerTime", level.triggerTime}};
}

json record(const SRSession& session) {
    return {{"sessionOpenTs", session.sessionOpenTs},
            {"openPrice", number(session.openPrice)},
            {"up", list(session.up)},
            {"dn", list(session.dn)}};
}

json record(const OverlayLine& line) {
    return {{"price", number(line.price)},
            {"startTime", line.startTime},
            {"endTime", line.endTime ? json(*line.endTime) : json(nullptr)},
            {"label", line.label},
            {"dashed", line.dashed}};
}

json record(const OvPoint& point) { return {{"idx", number(point.idx)}, {"v", number(point.v)}}; }

json record(const OvColorPoint& point) {
    return {{"idx", number(point.idx)},
            {"v", number(point.v)},
            {"positive", point.positive},
            {"base", number(point.base)},
            {"hf", number(point.hf)}};
}

json record(const OvCandle& candle) {
    return {{"idx", number(candle.idx)}, {"o", number(candle.o)}, {"h", number(candle.h)},
            {"l", number(candle.l)},     {"c", number(candle.c)}, {"realC", number(candle.realC)}};
}

json record(const HfpSample& sample) {
    json out{{"t", number(sample.t)}, {"call", number(sample.call)}, {"put", number(sample.put)}};
    out["atm"] = json::array();
    for (const StrikeFlow& flow : sample.atm)
        out["atm"].push_back({{"strike", number(flow.strike)}, {"call", number(flow.call)}, {"put", number(flow.put)}});
    out["band"] = sample.band;
    return out;
}

json record(const Gex3DData& surface) {
    return {{"spot", number(surface.spot)},
            {"strikes", surface.strikes},
            {"expirations", surface.expirations},
            {"expLabels", surface.expLabels},
            {"net", surface.net}};
}

json record(const Surface3D& surface) {
    const Gex3DView& view = *surface.view;
    const OrbitCamera& camera = view.camera;
    json bars = json::array();
    for (const Gex3DBar& bar : view.scene().bars) {
        const auto at = view.placeOf(bar);
        bars.push_back({{"name", bar.name},
                        {"place", bar.box.place},
                        {"size", bar.box.size},
                        {"at", at ? json(*at) : json(nullptr)}});
    }
    json hidden = json::array();
    for (std::size_t e = 0; e < view.expirations().size(); ++e)
        if (view.hidden().contains(view.expirations()[e])) hidden.push_back(view.expLabels()[e]);
    const auto& marked = surface.markedStrike.get();
    return {{"bars", std::move(bars)},
            {"area", view.area},
            {"controls", view.controls},
            {"camera",
             {{"position", camera.position()},
              {"target", camera.target()},
              {"yaw", camera.yaw()},
              {"pitch", camera.pitch()},
              {"distance", camera.distance()}}},
            {"angle", view.angle()},
            {"autoRotate", view.autoRotate},
            {"expirations", view.expLabels()},
            {"hidden", std::move(hidden)},
            {"marked", marked ? json(*marked) : json(nullptr)},
            {"tooltip", text(view.tooltip())},
            {"loading", view.loading()}};
}

}  // namespace vmr::stateRecords
