// What a person does in a pane's settings panel, without a toolkit.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "model/AppModel.h"
#include "store/SettingTable.h"

namespace vmr {

class PaneHost;

/// A setting as its control holds it: a switch, a number, or a choice's or a colour's text.
using SettingValue = std::variant<bool, double, std::string>;

/// Reads and changes one pane's settings by name, and tells in `PanelsOpen` what the panel shows. Every change holds at
/// once. While a gesture lasts none is stored; its end stores them all, as does the end of the editor. Unknown names
/// and values of another type change nothing. Main thread.
///
/// "hfScale" stands for the scale of the symbol that the pane shows: changing it sets the symbol's entry of
/// `hfScaleBySymbol`, and `hfScale` becomes the scale that was set last. Its default is that there is no entry.
class SettingsEditor {
 public:
    /// `model` outlives it.
    explicit SettingsEditor(AppModel& model) : model_(model) {}
    ~SettingsEditor() { close(); }
    SettingsEditor(const SettingsEditor&) = delete;
    SettingsEditor& operator=(const SettingsEditor&) = delete;

    SettingValue value(const Setting& setting) const;
    /// As it stands in the setting's field.
    std::string text(const Setting& setting) const;
    /// False for the scale of a symbol while the pane shows none.
    bool available(const Setting& setting) const;

    /// A number is brought to the nearest one that the control can stand at.
    void set(std::string_view name, const SettingValue& value);
    void step(std::string_view name, int steps);
    /// To the least or the most that is offered.
    void toEnd(std::string_view name, bool most);
    /// What was typed into the setting's field. A bad text marks the field and changes nothing.
    bool type(std::string_view name, std::string_view text);
    /// The text of the setting's field is given up.
    void giveUp(std::string_view name);
    /// The texts of all fields are given up.
    void forgiveAll();
    /// Every setting of the row gets its default.
    void restoreDefaults(std::string_view row);

    /// A drag or a held key.
    void beginGesture() { inGesture_ = true; }
    void endGesture();

    const std::set<std::string, std::less<>>& invalid() const { return invalid_; }

    /// The panel shows itself at this width with what matches `search`.
    void show(double width, std::string_view search);
    /// The panel is closed.
    void close();

 private:
    void apply(const GexConfig& changed);
    void forgive(std::string_view name);
    void tell();

    AppModel& model_;
    std::set<std::string, std::less<>> invalid_;
    bool inGesture_ = false, unsaved_ = false;
};

/// Changes all settings of a pane at once. Where that changes the source of the gamma figures, its chart is opened
/// anew.
void setSettings(AppModel& pane, const GexConfig& changed, AppModel::Saving saving);

/// Forgets the stored settings, the last symbol and timeframe, and gives the pane the defaults.
void resetSettings(AppModel& pane);

/// Gives every other pane the settings of `from`.
void applyToAllPanes(PaneHost& panes, const AppModel& from);

}  // namespace vmr
