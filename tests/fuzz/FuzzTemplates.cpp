// Any bytes as what the service answers about chart templates, and what it holds applied.
#include <cmath>

#include "FuzzEntry.h"
#include "model/ChartTemplates.h"
#include "model/TemplateRecord.h"

void vmr::fuzz::take(std::string_view text) {
    const auto reply = TemplatesService::readReply(text);
    const Json* result = std::get_if<Json>(&reply);
    if (!result) return require(!std::get<std::string>(reply).empty() || text.size() > 2);
    const auto list = TemplatesService::readList(*result);
    require(list.savedSlots.size() <= TemplatesService::slotKeys.size());
    for (const auto& [key, slot] : list.savedSlots) {
        ChartTemplates::fmtDate(slot.savedAt.value_or(""));
        const auto config = TemplateRecord::config(slot.config, "BOTH");
        require(config && config->gexSource == "BOTH");
        const auto view = TemplateRecord::view(slot.config);
        require(!view || view->autoY || (std::isfinite(view->low) && view->low < view->high));
        const auto again = TemplateRecord::capture(*config, view);
        require(TemplateRecord::config(again, "BOTH") == config && TemplateRecord::view(again).has_value() == !!view);
    }
}
