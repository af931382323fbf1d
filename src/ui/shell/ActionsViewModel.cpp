#include "ui/shell/ActionsViewModel.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "chart/AxisScale.h"
#include "model/AppModel.h"
#include "model/Expirations.h"
#include "ui/platform/KeyText.h"
#include "workspace/ActionSearch.h"
#include "workspace/GestureTable.h"
#include "workspace/SymbolList.h"

namespace vmr {

namespace {
QString text(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }

#ifdef Q_OS_MACOS
constexpr bool mac = true;
#else
constexpr bool mac = false;
#endif

QString label(std::string_view chord) { return text(chordLabel(chord, mac)); }

QVariantMap heading(const QString& title) {
    return {{QStringLiteral("label"), title}, {QStringLiteral("heading"), true}};
}

QString groupName(SymbolGroup group) {
    switch (group) {
        case SymbolGroup::recent:
            return QObject::tr("LAST USED");
        case SymbolGroup::futures:
            return QObject::tr("FUTURES");
        case SymbolGroup::stocks:
            break;
    }
    return QObject::tr("STOCKS");
}

// The rows whose words fit, the best first; all of them under their groups' headings where nothing is typed.
QVariantList fitting(const QString& typed, const std::vector<QVariantMap>& rows,
                     const std::vector<std::string>& words) {
    QVariantList out;
    QString group;
    for (const std::size_t i : searchRows(typed.toStdString(), words)) {
        const QString own = rows[i].value(QStringLiteral("group")).toString();
        if (typed.trimmed().isEmpty() && std::exchange(group, own) != own) out.push_back(heading(own));
        out.push_back(rows[i]);
    }
    return out;
}

const QString symbolMark = QStringLiteral("symbol "), expirationMark = QStringLiteral("expiration ");
}  // namespace

ActionsViewModel::ActionsViewModel(HotkeyRouter& router, Hooks hooks)
    : router_(router), hooks_(std::move(hooks)), changed_(router.changed.connect([this] {
          readKeys();
          emit keysChanged();
      })) {
    for (const Action& action : actionTable()) titles_.insert(text(action.id), text(action.title));
    readKeys();
}

void ActionsViewModel::readKeys() {
    for (const Action& action : actionTable()) keys_.insert(text(action.id), label(router_.keyOf(action.id)));
}

bool ActionsViewModel::keysAreDefaults() const {
    const auto table = actionTable();
    return std::all_of(table.begin(), table.end(), [this](const Action& one) { return router_.isDefault(one.id); });
}

bool ActionsViewModel::run(const QString& id, bool second) const {
    const Action* action = findAction(id.toStdString());
    return action && runAction(*action, hooks_.context(second)).taken;
}

QString ActionsViewModel::obstacle(const QString& id, bool second) const {
    const Action* action = findAction(id.toStdString());
    const ActionContext at = hooks_.context(second);
    return action && action->obstacle && at.pane ? text(action->obstacle(at)) : QString();
}

bool ActionsViewModel::on(const QString& id, bool second) const {
    const Action* action = findAction(id.toStdString());
    const ActionContext at = hooks_.context(second);
    return action && action->isOn && at.pane && action->isOn(at);
}

QVariantMap ActionsViewModel::row(const Action& action, const ActionContext& at) const {
    return {{QStringLiteral("label"), text(action.title)},
            {QStringLiteral("key"), label(router_.keyOf(action.id))},
            {QStringLiteral("on"), action.isOn && action.isOn(at)},
            {QStringLiteral("value"), text("action " + action.id)}};
}

// `words` gets what each can be found by.
std::vector<QVariantMap> ActionsViewModel::symbolEntries(const ActionContext& at, std::vector<std::string>& words,
                                                         bool recent) const {
    std::vector<std::string> last;
    for (const QString& one : hooks_.recentSymbols()) last.push_back(one.toStdString());
    std::vector<QVariantMap> out;
    for (const SymbolRow& one : symbolRows(at, recent ? last : std::vector<std::string>())) {
        words.push_back(one.symbol + " " + one.contract);
        out.push_back({{QStringLiteral("label"), text(one.symbol)},
                       {QStringLiteral("detail"), text(one.contract)},
                       {QStringLiteral("right"), one.last ? text(AxisScale::fmtPrice(*one.last).text()) : QString()},
                       {QStringLiteral("on"), at.pane->currentSymbol() == one.symbol},
                       {QStringLiteral("group"), groupName(one.group)},
                       {QStringLiteral("value"), symbolMark + text(one.symbol)}});
    }
    return out;
}

QVariantList ActionsViewModel::find(const QString& typed, bool second) const {
    const ActionContext at = hooks_.context(second);
    if (!at.pane) return {};
    std::vector<QVariantMap> rows;
    std::vector<std::string> words;
    for (const Action& action : actionTable()) {
        if (action.fixed || (action.obstacle && !action.obstacle(at).empty())) continue;
        rows.push_back(row(action, at));
        rows.back().insert(QStringLiteral("group"), text(groupTitle(action.group)).toUpper());
        words.push_back(action.title + " " + std::string(groupTitle(action.group)));
    }
    for (QVariantMap& one : symbolEntries(at, words, false)) rows.push_back(std::move(one));
    for (const std::string& iso : at.pane->options.futureExps.get()) {
        const std::string name = expDteLabel(iso, at.pane->clock().now());
        words.push_back("Expiration " + name + " " + iso);
        rows.push_back({{QStringLiteral("label"), tr("Expiration %1").arg(text(name))},
                        {QStringLiteral("group"), tr("EXPIRATIONS")},
                        {QStringLiteral("on"), at.pane->options.selectedExp.get() == iso},
                        {QStringLiteral("value"), expirationMark + text(iso)}});
    }
    return fitting(typed, rows, words);
}

QVariantList ActionsViewModel::symbols(const QString& typed, bool second) const {
    const ActionContext at = hooks_.context(second);
    std::vector<std::string> words;
    const auto rows = symbolEntries(at, words, typed.trimmed().isEmpty());
    return fitting(typed, rows, words);
}

void ActionsViewModel::take(const QString& value, bool second) const {
    const ActionContext at = hooks_.context(second);
    if (!at.pane || !at.pane->session.isSignedIn) return;
    if (value.startsWith(symbolMark)) {
        const std::string symbol = value.mid(symbolMark.size()).toStdString();
        if (symbol != at.pane->currentSymbol()) at.pane->switchSymbol(symbol);
    } else if (value.startsWith(expirationMark)) {
        at.pane->setExpiration(value.mid(expirationMark.size()).toStdString());
    } else {
        run(value.section(QLatin1Char(' '), 1), second);
    }
}

QVariantList ActionsViewModel::keyRows(const QString& typed) const {
    QVariantList out;
    std::optional<ActionGroup> group;
    const auto fits = [&typed](const std::string& words) { return searchRank(typed.toStdString(), words) >= 0; };
    for (const Action& action : actionTable()) {
        const std::string key = router_.keyOf(action.id);
        if (!fits(action.title + " " + std::string(groupTitle(action.group)) + " " + key)) continue;
        if (std::exchange(group, action.group) != action.group)
            out.push_back(heading(text(groupTitle(action.group)).toUpper()));
        out.push_back(QVariantMap{{QStringLiteral("id"), text(action.id)},
                                  {QStringLiteral("label"), text(action.title)},
                                  {QStringLiteral("key"), label(key)},
                                  {QStringLiteral("fixed"), action.fixed},
                                  {QStringLiteral("changed"), !router_.isDefault(action.id)}});
    }
    bool first = true;
    for (const FixedKey& key : fixedKeys()) {
        if (!fits(std::string(key.title) + " " + std::string(key.label))) continue;
        if (std::exchange(first, false)) out.push_back(heading(tr("EVERYWHERE")));
        out.push_back(QVariantMap{{QStringLiteral("label"), text(key.title)},
                                  {QStringLiteral("key"), text(key.label)},
                                  {QStringLiteral("fixed"), true}});
    }
    return out;
}

QVariantList ActionsViewModel::gestureRows() {
    QVariantList out;
    std::string_view place;
    for (const Gesture& one : gestureTable()) {
        if (std::exchange(place, one.place) != one.place) out.push_back(heading(text(one.place).toUpper()));
        out.push_back(
            QVariantMap{{QStringLiteral("label"), text(one.gesture)}, {QStringLiteral("effect"), text(one.effect)}});
    }
    return out;
}

QString ActionsViewModel::chord(int key, const QString& typed, int modifiers) {
    return text(chordText(keyStroke(key, typed, Qt::KeyboardModifiers(modifiers))));
}

QString ActionsViewModel::chordLabel(const QString& chord) { return label(chord.toStdString()); }

QString ActionsViewModel::holder(const QString& chord, const QString& id) const {
    const Action* action = router_.actionFor(chord.toStdString());
    return action && action->id != id.toStdString() ? text(action->title) : QString();
}

QString ActionsViewModel::assign(const QString& id, const QString& chord) {
    return text(router_.assign(id.toStdString(), chord.toStdString()).value_or(""));
}

}  // namespace vmr
