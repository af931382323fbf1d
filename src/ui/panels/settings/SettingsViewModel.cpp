#include "ui/panels/settings/SettingsViewModel.h"

#include "workspace/SettingsEditor.h"
#include "workspace/SettingsLayout.h"

namespace vmr {

namespace {
QString text(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }

QVariant variant(const SettingValue& value) {
    if (const auto* words = std::get_if<std::string>(&value)) return text(*words);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    return std::get<bool>(value);
}

SettingValue settingValue(const QVariant& value) {
    if (value.typeId() == QMetaType::Bool) return value.toBool();
    if (value.typeId() == QMetaType::QString) return value.toString().toStdString();
    return value.toDouble();
}

QString controlName(SettingControl control) {
    switch (control) {
        case SettingControl::toggle:
            return QStringLiteral("SettingToggle");
        case SettingControl::slider:
        case SettingControl::logSlider:
            return QStringLiteral("SettingSlider");
        case SettingControl::stepper:
            return QStringLiteral("SettingStepper");
        case SettingControl::menu:
            return QStringLiteral("SettingMenu");
        case SettingControl::color:
            return QStringLiteral("SettingColor");
        case SettingControl::field:
        case SettingControl::none:
            break;
    }
    return QStringLiteral("SettingField");
}

QVariantMap partRecord(const Setting& setting) {
    QVariantMap out;
    out[QStringLiteral("name")] = text(setting.name);
    out[QStringLiteral("control")] = controlName(setting.control);
    const QString part = setting.part.empty() ? QString() : QStringLiteral(" ") + text(setting.part);
    out[QStringLiteral("title")] = text(setting.label) + part;
    out[QStringLiteral("least")] = setting.offered.least;
    out[QStringLiteral("most")] = setting.offered.most;
    out[QStringLiteral("step")] = setting.step;
    out[QStringLiteral("logarithmic")] = setting.control == SettingControl::logSlider;
    out[QStringLiteral("needsSymbol")] = setting.name == "hfScale";
    QVariantList choices;
    for (const SettingChoice& one : setting.choices)
        choices.push_back(
            QVariantMap{{QStringLiteral("value"), text(one.value)}, {QStringLiteral("label"), text(one.label)}});
    out[QStringLiteral("choices")] = choices;
    return out;
}

QVariantMap rowRecord(const SettingsRow& row) {
    QVariantList parts;
    for (const Setting* one : row.parts) parts.push_back(partRecord(*one));
    return {{QStringLiteral("id"), text(row.id)},
            {QStringLiteral("label"), text(row.label)},
            {QStringLiteral("parts"), parts}};
}

QString sectionId(SettingSection section) { return QStringLiteral("section %1").arg(static_cast<int>(section)); }

QVariantList columnRecords(double width) {
    QVariantList out;
    for (const auto& blocks : settingsColumns(width, {})) {
        QVariantList sections;
        for (const SettingsBlock& block : blocks) {
            QVariantList rows;
            for (const SettingsRow* row : block.rows) rows.push_back(rowRecord(*row));
            sections.push_back(QVariantMap{{QStringLiteral("id"), sectionId(block.section)},
                                           {QStringLiteral("title"), text(sectionTitle(block.section))},
                                           {QStringLiteral("rows"), rows}});
        }
        out.push_back(QVariant(sections));
    }
    return out;
}

QString call(const std::function<std::string(const std::string&)>& action, const QString& file) {
    return action ? QString::fromStdString(action(file.toStdString())) : QString();
}
}  // namespace

SettingsViewModel::SettingsViewModel(QObject* parent) : QObject(parent) {
    // every key is there before a binding asks for it
    for (const SettingsRow& row : settingsRows()) {
        keys_.insert(text(row.id), QString());
        shown_.insert(text(row.id), true);
        for (const Setting* one : row.parts) {
            values_.insert(text(one->name), QVariant());
            texts_.insert(text(one->name), QString());
            problems_.insert(text(one->name), QString());
        }
    }
}

void SettingsViewModel::edit(SettingsEditor* editor) {
    editor_ = editor;
    refresh();
}

void SettingsViewModel::setKeyOf(const KeyOf& keyOf) {
    for (const SettingsRow& row : settingsRows())
        keys_.insert(text(row.id), keyOf ? QString::fromStdString(keyOf(row)) : QString());
}

void SettingsViewModel::setOpen(bool open) {
    if (std::exchange(open_, open) == open) return;
    if (!open && editor_) editor_->close();
    if (!open && !search_.isEmpty()) {
        search_.clear();
        showMatches();
    }
    refresh();
}

void SettingsViewModel::refresh() {
    if (!editor_ || !open_) return;
    for (const SettingsRow& row : settingsRows())
        for (const Setting* one : row.parts) {
            const QString name = text(one->name);
            values_.insert(name, variant(editor_->value(*one)));
            texts_.insert(name, text(editor_->text(*one)));
            const bool bad = editor_->invalid().contains(one->name);
            problems_.insert(name, bad ? text(settingRangeText(*one)) : QString());
        }
    const bool hasSymbol = editor_->available(*findSetting("hfScale"));
    if (std::exchange(hasSymbol_, hasSymbol) != hasSymbol) emit symbolChanged();
}

void SettingsViewModel::setSearch(const QString& search) {
    if (search == search_) return;
    search_ = search;
    showMatches();
}

void SettingsViewModel::layOut(qreal width) {
    const bool same = !columns_.isEmpty() && pack(width) == pack(width_);
    width_ = width;
    if (!same) {
        columns_ = columnRecords(width);
        emit columnsChanged();
    }
    showMatches();
}

void SettingsViewModel::showMatches() {
    const std::string search = search_.toStdString();
    const auto matching = settingsColumns(width_, search);
    QSet<QString> left;
    for (const auto& blocks : matching)
        for (const SettingsBlock& block : blocks) {
            left.insert(sectionId(block.section));
            for (const SettingsRow* row : block.rows) left.insert(text(row->id));
        }
    for (const SettingsRow& row : settingsRows()) shown_.insert(text(row.id), left.contains(text(row.id)));
    const auto columns = pack(width_);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        bool any = false;
        for (const SettingSection section : columns[i]) {
            shown_.insert(sectionId(section), left.contains(sectionId(section)));
            any = any || left.contains(sectionId(section));
        }
        shown_.insert(QStringLiteral("column %1").arg(i), any);
    }
    anyShown_ = !matching.empty();
    if (editor_ && open_) editor_->show(width_, search);
    emit searchChanged();
}

void SettingsViewModel::set(const QString& name, const QVariant& value) {
    if (editor_) editor_->set(name.toStdString(), settingValue(value));
    refresh();
}

void SettingsViewModel::step(const QString& name, int steps) {
    if (editor_) editor_->step(name.toStdString(), steps);
    refresh();
}

void SettingsViewModel::toEnd(const QString& name, bool most) {
    if (editor_) editor_->toEnd(name.toStdString(), most);
    refresh();
}

bool SettingsViewModel::type(const QString& name, const QString& typed) {
    const bool right = editor_ && editor_->type(name.toStdString(), typed.toStdString());
    refresh();
    return right;
}

void SettingsViewModel::giveUp(const QString& name) {
    if (editor_) editor_->giveUp(name.toStdString());
    refresh();
}

void SettingsViewModel::restoreDefaults(const QString& row) {
    if (editor_) editor_->restoreDefaults(row.toStdString());
    refresh();
}

void SettingsViewModel::beginGesture() {
    if (editor_) editor_->beginGesture();
}

void SettingsViewModel::endGesture() {
    if (editor_) editor_->endGesture();
}

void SettingsViewModel::applyToAll() {
    if (actions_.applyToAll) actions_.applyToAll();
}

void SettingsViewModel::reset() {
    if (editor_) editor_->forgiveAll();
    if (actions_.reset) actions_.reset();
    refresh();
}

void SettingsViewModel::resetAccount() {
    if (actions_.resetAccount) actions_.resetAccount();
}

QString SettingsViewModel::accountQuestion() const {
    return actions_.accountQuestion ? QString::fromStdString(actions_.accountQuestion()) : QString();
}

QString SettingsViewModel::exportTo(const QString& file) { return call(actions_.exportTo, file); }

QString SettingsViewModel::importFrom(const QString& file) {
    const QString problem = call(actions_.importFrom, file);
    if (editor_ && problem.isEmpty()) editor_->forgiveAll();
    refresh();
    return problem;
}

}  // namespace vmr
