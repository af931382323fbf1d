#include "market/MinuteChannel.h"

#include "base/NumberText.h"
#include "market/Coerce.h"

namespace vmr {

const MinuteChannel bubbleMinutes{"bubbles", "bubble", coerce::minuteInt, 600};
const MinuteChannel triangleMinutes{"triangles", "triangle", coerce::minuteInt, 600};
const MinuteChannel hfHistoryMinutes{"candles", "candle", coerce::intv, 5000};

void forEachMinute(JsonView payload, const MinuteChannel& channel, RepairTally& tally,
                   const std::function<void(std::int64_t minute, JsonView object)>& take) {
    if (const JsonView snapshot = payload[channel.snapshotKey]; snapshot.isObject()) {
        for (const auto& [key, value] : snapshot.members()) {
            const auto minute = parseInt(key);
            if (minute && value.isObject()) take(*minute, value);
        }
        return;
    }
    const auto minute = channel.minute(payload["minuteTs"], tally);
    if (const JsonView single = payload[channel.singleKey]; minute && single.isObject()) take(*minute, single);
}

}  // namespace vmr
