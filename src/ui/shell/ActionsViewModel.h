// What can be done, with its present keys, as Qt properties and lists.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <functional>

#include "workspace/HotkeyRouter.h"

namespace vmr {

/// One for each window. "second" is the window's second pane. Main thread.
class ActionsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's shell")
    Q_PROPERTY(QVariantMap keys READ keys NOTIFY keysChanged)
    Q_PROPERTY(QVariantMap titles READ titles CONSTANT)
    Q_PROPERTY(bool keysAreDefaults READ keysAreDefaults NOTIFY keysChanged)

 public:
    struct Hooks {
        std::function<ActionContext(bool second)> context;
        std::function<QStringList()> recentSymbols;  ///< the latest first
    };

    /// `router` outlives it.
    ActionsViewModel(HotkeyRouter& router, Hooks hooks);

    /// The key of each action as a person reads it; "" for none.
    QVariantMap keys() const { return keys_; }
    QVariantMap titles() const { return titles_; }
    bool keysAreDefaults() const;

    Q_INVOKABLE bool run(const QString& id, bool second) const;
    /// Why it cannot be done now; empty where it can.
    Q_INVOKABLE QString obstacle(const QString& id, bool second) const;
    Q_INVOKABLE bool on(const QString& id, bool second) const;

    /// Rows of everything that can be done, and of all symbols, that fit what is typed, the best first; of all by group
    /// where nothing is. A row is { label, detail, key, on, value }, or { label, heading: true }.
    Q_INVOKABLE QVariantList find(const QString& typed, bool second) const;
    /// The same of symbols alone: { label, detail, right, value }.
    Q_INVOKABLE QVariantList symbols(const QString& typed, bool second) const;
    /// Carries out a row's `value`.
    Q_INVOKABLE void take(const QString& value, bool second) const;

    // The user's keys -------------------------------------------------------------------------------------------------
    /// { id, label, key, changed }, { label, key, fixed: true } and headings.
    Q_INVOKABLE QVariantList keyRows(const QString& typed) const;
    /// What a hand can do: { label, effect } and headings.
    Q_INVOKABLE static QVariantList gestureRows();
    /// The text of a pressed key, to be given to an action; empty for one that is none by itself.
    Q_INVOKABLE static QString chord(int key, const QString& text, int modifiers);
    Q_INVOKABLE static QString chordLabel(const QString& chord);
    /// The title of another action that has the key; empty for none.
    Q_INVOKABLE QString holder(const QString& chord, const QString& id) const;
    /// Gives the action that key, "" for none; returns what is in the way.
    Q_INVOKABLE QString assign(const QString& id, const QString& chord);
    Q_INVOKABLE void reset(const QString& id) { router_.reset(id.toStdString()); }
    Q_INVOKABLE void resetAll() { router_.resetAll(); }

 signals:
    void keysChanged();

 private:
    void readKeys();
    QVariantMap row(const Action& action, const ActionContext& at) const;
    std::vector<QVariantMap> symbolEntries(const ActionContext& at, std::vector<std::string>& words, bool recent) const;

    HotkeyRouter& router_;
    Hooks hooks_;
    QVariantMap keys_, titles_;
    Connection changed_;
};

}  // namespace vmr
