// Messages of an options source as the relay sends them.
#pragma once

#include <string>

namespace vmr::bench {

/// The flow of calls at the first strike of list `list` (0 the aggregate) in message `turn`.
inline double flowOf(int list, int turn) { return 1000.5 * turn + list; }

inline void appendRows(std::string& text, int strikes, int list, int turn) {
    text += '[';
    for (int i = 0; i < strikes; ++i) {
        if (i) text += ',';
        text += R"({"strike":)" + std::to_string(400 + i);
        double value = flowOf(list, turn);
        for (const char* key : {"callHf", "callGex", "putGex", "callDex", "putDex", "putHf", "callOI", "putOI"}) {
            text += std::string(",\"") + key + "\":" + std::to_string(value);
            value = 12345.25 * (i + 1) + value / 3;
        }
        text += '}';
    }
    text += ']';
}

inline std::string derivedFrame(int strikes, int expirations, int turn) {
    const auto date = [](int e) { return "2026-06-" + std::to_string(11 + e); };
    std::string text = R"({"type":"event","channel":"derived:QQQ","payload":{"spot":525.25,"etfRatio":40.01,)"
                       R"("callWallStrike":530,"putWallStrike":515,"gammaFlipStrike":522,"expirations":[)";
    for (int e = 0; e < expirations; ++e) text += (e ? ",\"" : "\"") + date(e) + '"';
    text += R"(],"gexByStrike":)";
    appendRows(text, strikes, 0, turn);
    text += R"(,"byExpiration":{)";
    for (int e = 0; e < expirations; ++e) {
        text += (e ? ",\"" : "\"") + date(e) + R"(":{"callWallStrike":530,"putWallStrike":515,"gexByStrike":)";
        appendRows(text, strikes, e + 1, turn);
        text += '}';
    }
    return text + "}}}";
}

}  // namespace vmr::bench
