// A pane's settings panel, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QQmlPropertyMap>
#include <QString>
#include <QVariantList>
#include <functional>
#include <utility>

namespace vmr {

class SettingsEditor;
struct SettingsRow;

/// The rows of the panel as QML shows them, and the way of a person's changes to the pane. Values come one by one, each
/// with a notice of its own; the columns only when the panel's width makes others. Main thread.
class SettingsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to a pane")
    /// By setting: the value, its text in a field, and what a field with a bad text would take; empty when it is right.
    Q_PROPERTY(QQmlPropertyMap* values READ values CONSTANT)
    Q_PROPERTY(QQmlPropertyMap* texts READ texts CONSTANT)
    Q_PROPERTY(QQmlPropertyMap* problems READ problems CONSTANT)
    /// By row: the key that does the same.
    Q_PROPERTY(QQmlPropertyMap* keys READ keys CONSTANT)
    /// By row, by section as "section N" and by column as "column N": whether the search leaves it in.
    Q_PROPERTY(QQmlPropertyMap* shown READ shown CONSTANT)
    Q_PROPERTY(QVariantList columns READ columns NOTIFY columnsChanged)
    Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
    Q_PROPERTY(bool anyShown READ anyShown NOTIFY searchChanged)
    Q_PROPERTY(bool hasSymbol READ hasSymbol NOTIFY symbolChanged)
    Q_PROPERTY(bool hasOtherPanes READ hasOtherPanes NOTIFY hasOtherPanesChanged)

 public:
    /// Each may be empty: then nothing happens. Those of files give what went wrong.
    struct Actions {
        std::function<void()> applyToAll, reset, resetAccount;
        std::function<std::string()> accountQuestion;  ///< what is asked before `resetAccount`
        std::function<std::string(const std::string&file)> exportTo, importFrom;
    };
    /// The text of the key that does what a row does; empty for none.
    using KeyOf = std::function<std::string(const SettingsRow& row)>;

    explicit SettingsViewModel(QObject* parent = nullptr);

    /// Whose settings these are, which must outlive its being set here; null for nobody's.
    void edit(SettingsEditor* editor);
    void setActions(Actions actions) { actions_ = std::move(actions); }
    /// To be called again when a key has changed.
    void setKeyOf(const KeyOf& keyOf);
    void setHasOtherPanes(bool has) {
        if (std::exchange(hasOtherPanes_, has) != has) emit hasOtherPanesChanged();
    }
    /// The panel is open, or closed.
    void setOpen(bool open);
    /// Reads the values anew, while the panel is open.
    void refresh();

    QQmlPropertyMap* values() { return &values_; }
    QQmlPropertyMap* texts() { return &texts_; }
    QQmlPropertyMap* problems() { return &problems_; }
    QQmlPropertyMap* keys() { return &keys_; }
    QQmlPropertyMap* shown() { return &shown_; }
    QVariantList columns() const { return columns_; }
    QString search() const { return search_; }
    void setSearch(const QString& search);
    bool anyShown() const { return anyShown_; }
    bool hasSymbol() const { return hasSymbol_; }
    bool hasOtherPanes() const { return hasOtherPanes_; }

    /// Lays the columns out for a panel of that width.
    Q_INVOKABLE void layOut(qreal width);
    Q_INVOKABLE void set(const QString& name, const QVariant& value);
    Q_INVOKABLE void step(const QString& name, int steps);
    Q_INVOKABLE void toEnd(const QString& name, bool most);
    /// False for a bad text.
    Q_INVOKABLE bool type(const QString& name, const QString& text);
    Q_INVOKABLE void giveUp(const QString& name);
    Q_INVOKABLE void restoreDefaults(const QString& row);
    Q_INVOKABLE void beginGesture();
    Q_INVOKABLE void endGesture();
    Q_INVOKABLE void applyToAll();
    Q_INVOKABLE void reset();
    Q_INVOKABLE void resetAccount();
    Q_INVOKABLE QString accountQuestion() const;
    /// Both give what went wrong; empty for nothing.
    Q_INVOKABLE QString exportTo(const QString& file);
    Q_INVOKABLE QString importFrom(const QString& file);

 signals:
    void columnsChanged();
    void searchChanged();
    void symbolChanged();
    void hasOtherPanesChanged();

 private:
    void showMatches();

    SettingsEditor* editor_ = nullptr;
    Actions actions_;
    QQmlPropertyMap values_, texts_, problems_, keys_, shown_;
    QVariantList columns_;
    QString search_;
    qreal width_ = 0;
    bool open_ = false, anyShown_ = true, hasSymbol_ = false, hasOtherPanes_ = false;
};

}  // namespace vmr
