#include "ui/chart/EntryPillState.h"

#include <utility>

namespace vmr {

void EntryPillState::update(const std::optional<EntryPill>& pill) {
    bool differs = std::exchange(shown_, pill.has_value()) != pill.has_value();
    if (pill) {
        const std::string_view now = pill->result.text.text();
        const QLatin1String text(now.data(), static_cast<int>(now.size()));
        const QRectF box(pill->box.x, pill->box.y, pill->box.width, pill->box.height);
        differs = std::exchange(gain_, pill->result.gain) != pill->result.gain || differs;
        differs = std::exchange(box_, box) != box || differs;
        if (text_ != text) {
            text_ = text;
            differs = true;
        }
    }
    if (differs) emit changed();
}

}  // namespace vmr
