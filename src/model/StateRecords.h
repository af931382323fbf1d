// How the records stand in the state document. Private to this folder.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "market/FieldView.h"
#include "market/Records.h"
#include "model/HfpSample.h"
#include "model/Surface3D.h"
#include "sim/SimEngine.h"

namespace vmr {
class AppModel;
class SimDesk;
}  // namespace vmr

namespace vmr::stateRecords {

using json = nlohmann::ordered_json;

/// Null when not finite or missing.
json number(double value);
json number(const std::optional<double>& value);
json text(const std::optional<std::string>& value);
/// Arrays [time, open, high, low, close, volume].
json bars(const std::vector<Candle>& series);
json keys(const DerivedFields& fields);

json record(const PriceLevel& level);
json record(const StrikeRow& row);
json record(const HudMetrics& hud);
json record(const Viewport& viewport);
json record(const BubblePt& point);
json record(const TrianglePt& point);
json record(const OscPt& point);
json record(const OscLines& lines);
json record(const SRLevel& level);
json record(const SRSession& session);
json record(const OverlayLine& line);
json record(const OvPoint& point);
json record(const OvColorPoint& point);
json record(const OvCandle& candle);
json record(const HfpSample& sample);
json record(const Gex3DData& surface);
/// How its open view stands.
json record(const Surface3D& surface);
json record(const SimEngine& engine);
json record(const SimDesk& desk);
/// The HF pressure panel as of now.
json pressure(const AppModel& pane);

template <class Record>
json list(const std::vector<Record>& records) {
    json out = json::array();
    for (const Record& one : records) out.push_back(record(one));
    return out;
}

}  // namespace vmr::stateRecords
