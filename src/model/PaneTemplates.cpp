// A pane as a template: what is captured of it, and what applying one changes.
#include "model/AppModel.h"
#include "model/TemplateRecord.h"

namespace vmr {

ChartTemplates::Pane AppModel::templatesPane() {
    return {.symbolSource = [this] { return symbolSource(); },
            .isSignedIn = [this] { return session.isSignedIn.get(); },
            .capture = [this] { return captureTemplateConfig(); },
            .apply = [this](const JsonMembers& saved, bool byHand) { applyTemplate(saved, byHand); },
            .barsShown =
                [this] {
                    const auto view = viewToSave();
                    return view ? view->bars : 0;
                },
            .handAt = [this] { return camera.handAt(); },
            .timeframe = [this] { return bars.timeframe.get(); },
            .log = [this](const std::string& line) { log.append(line); }};
}

void AppModel::watchTemplates() {
    contentLinks_.push_back(
        panels.templatesPanelOpen.changed.connect([this] { templates.setShown(panels.templatesPanelOpen); }));
    contentLinks_.push_back(session.isSignedIn.changed.connect([this] { templates.follow(); }));
}

// The chart reads its bars after this turn, and has its own view of the first ones.
void AppModel::showWaitingView() {
    if (!templates.waitingView()) return;
    work_.main().post(work_.whileThere([this] {
        const auto view = templates.takeView(bars.displayCandles->size());
        if (view) camera.applyView(TemplateRecord::viewNear(*view, newestClose()), false);
    }));
}

double AppModel::newestClose() const { return bars.candles.empty() ? 0 : bars.candles.back().close; }

// While a view waits, the chart's own is the one that too few bars left it with.
std::optional<ViewSetup> AppModel::viewToSave() {
    const auto shown = camera.viewSetup();
    const auto waiting = templates.waitingView();
    return shown && waiting ? TemplateRecord::viewOver(*waiting, *shown) : shown;
}

JsonMembers AppModel::captureTemplateConfig() { return TemplateRecord::capture(config, viewToSave()); }

void AppModel::applyTemplate(const JsonMembers& saved, bool byHand) {
    if (const auto changed = TemplateRecord::config(saved, config->gexSource)) setConfig(*changed);
    templates.keepView(std::nullopt);  // of a template that was applied before
    const auto view = TemplateRecord::view(saved);
    if (!view) return;
    camera.applyView(TemplateRecord::viewNear(*view, newestClose()), byHand);
    templates.keepView(bars.displayCandles->size() < ChartTemplates::enoughBars ? view : std::nullopt);
}

}  // namespace vmr
