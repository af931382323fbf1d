// Any bytes as a tape, plain or packed, and as the time of one of its rows.
#include <cmath>

#include "FuzzEntry.h"
#include "FuzzFile.h"
#include "relay/Tape.h"
#include "relay/TapeReader.h"

void vmr::fuzz::take(std::string_view text) {
    const FuzzFile file(text);
    int rows = 0;
    const auto problem = relay::readTape(file.path(), [&](const relay::TapeRow& row) {
        ++rows;
        require(row.timeMs >= 0 && std::isfinite(row.price) && row.size >= 0);
    });
    std::string error;
    const auto span = relay::tapeSpan(file.path(), error);
    require(span.has_value() == error.empty() && (!span || (rows > 0 && span->first <= span->last && !problem)));
    if (const auto tape = relay::Tape::load(file.path(), 0.25, error)) require(tape->size() > 0);
    if (const auto time = relay::tapeTime(text)) require(*time >= 0 && *time <= 7'258'118'400'000);
}
