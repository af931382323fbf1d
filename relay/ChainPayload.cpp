#include "relay/ChainPayload.h"

#include <array>
#include <cmath>

#include "relay/Payloads.h"

namespace vmr::relay {

namespace {
struct Column {
    std::string_view opening;
    std::int64_t StrikeSums::*value;
};
constexpr std::array columns{
    Column{R"(,"callGex":)", &StrikeSums::callGex}, Column{R"(,"putGex":)", &StrikeSums::putGex},
    Column{R"(,"callDex":)", &StrikeSums::callDex}, Column{R"(,"putDex":)", &StrikeSums::putDex},
    Column{R"(,"callHf":)", &StrikeSums::callHf},   Column{R"(,"putHf":)", &StrikeSums::putHf},
    Column{R"(,"callOI":)", &StrikeSums::callOI},   Column{R"(,"putOI":)", &StrikeSums::putOI}};

std::string number(double value) {
    std::string text;
    payload::appendNumber(text, value);
    return text;
}

std::string rows(const OptionChain& chain, const StrikeTable& table) {
    std::string text = "[";
    text.reserve(table.rows.size() * 160 + 2);
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        text += i > 0 ? R"(,{"strike":)" : R"({"strike":)";
        payload::appendNumber(text, chain.strikes()[table.first + i]);
        for (const Column& column : columns) {
            text += column.opening;
            payload::appendInteger(text, table.rows[i].*column.value);
        }
        text += '}';
    }
    return text + "]";
}

void appendTable(JsonFields& fields, const OptionChain& chain, const StrikeTable& table, double spot) {
    const ChainLevels levels = chain.levels(table, spot);
    const StrikeSums total = totalOf(table);
    fields.emplace_back("gexByStrike", rows(chain, table));
    fields.emplace_back("callWallStrike", number(levels.callWall));
    fields.emplace_back("putWallStrike", number(levels.putWall));
    fields.emplace_back("gammaFlipStrike", levels.gammaFlip > 0 ? number(levels.gammaFlip) : "null");
    fields.emplace_back("totalCallOI", std::to_string(total.callOI));
    fields.emplace_back("totalPutOI", std::to_string(total.putOI));
    fields.emplace_back("totalCallGex", std::to_string(total.callGex));
    fields.emplace_back("totalPutGex", std::to_string(total.putGex));
    fields.emplace_back("hfTotal", std::to_string(total.callHf + total.putHf));
}
}  // namespace

JsonFields chainFields(const OptionChain& chain, const ChainState& state) {
    JsonFields fields;
    fields.emplace_back("spot", number(std::round(state.spot * 1e4) / 1e4));
    fields.emplace_back("etfRatio", number(chain.ratio()));
    appendTable(fields, chain, state.all, state.spot);
    std::string dates, slices;
    for (std::size_t e = 0; e < chain.expirations().size(); ++e) {
        const std::string date = payload::quoted(chain.expirations()[e]);
        dates += (e > 0 ? "," : "") + date;
        JsonFields slice;
        appendTable(slice, chain, state.byExpiration[e], state.spot);
        slices += (e > 0 ? "," : "") + date + ":" + objectOf(slice);
    }
    fields.emplace_back("expirations", "[" + dates + "]");
    fields.emplace_back("byExpiration", "{" + slices + "}");
    return fields;
}

std::string objectOf(const JsonFields& fields, const JsonFields* before) {
    std::string text = "{";
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (before && i < before->size() && (*before)[i] == fields[i]) continue;
        if (text.size() > 1) text += ',';
        text.append("\"").append(fields[i].first).append("\":").append(fields[i].second);
    }
    return text + "}";
}

}  // namespace vmr::relay
