// What the application's menu does, and what it shows of itself, as Qt properties.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <functional>
#include <utility>

namespace vmr {

/// One for each window. What the program cannot do it has no hook for, and the menu no row. Main thread.
class ShellViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's shell")
    Q_PROPERTY(QString version READ version CONSTANT)
    Q_PROPERTY(QString build READ build CONSTANT)
    Q_PROPERTY(QString buildDate READ buildDate CONSTANT)
    Q_PROPERTY(bool canOpenWindows READ canOpenWindows NOTIFY hooksChanged)
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates NOTIFY hooksChanged)
    Q_PROPERTY(bool canLeavePractice READ canLeavePractice NOTIFY hooksChanged)
    Q_PROPERTY(Sheet sheet READ sheet NOTIFY sheetChanged)
    Q_PROPERTY(KeyTab keyTab READ keyTab WRITE setKeyTab NOTIFY keyTabChanged)
    Q_PROPERTY(QString messageTitle READ messageTitle NOTIFY sheetChanged)
    Q_PROPERTY(QString messageText READ messageText NOTIFY sheetChanged)

 public:
    /// What lies over the window.
    enum class Sheet { none, about, chartKey, message };
    Q_ENUM(Sheet)
    /// What the key to the chart shows.
    enum class KeyTab { marks, keys, gestures };
    Q_ENUM(KeyTab)

    /// Gets a title and a text for the person.
    using Tell = std::function<void(const QString& title, const QString& text)>;
    struct Hooks {
        std::function<bool()> newWindow;  ///< false when there are as many as there may be
        std::function<void(Tell tell)> checkForUpdates;
        std::function<void()> quit;
        std::function<void()> leavePractice;  ///< back to the form
    };

    using QObject::QObject;
    void setHooks(Hooks hooks);

    QString version() const;
    QString build() const;
    QString buildDate() const;
    bool canOpenWindows() const { return static_cast<bool>(hooks_.newWindow); }
    bool canCheckForUpdates() const { return static_cast<bool>(hooks_.checkForUpdates); }
    bool canLeavePractice() const { return static_cast<bool>(hooks_.leavePractice); }
    Sheet sheet() const { return sheet_; }
    KeyTab keyTab() const { return keyTab_; }
    void setKeyTab(KeyTab tab) {
        if (std::exchange(keyTab_, tab) != tab) emit keyTabChanged();
    }
    QString messageTitle() const { return messageTitle_; }
    QString messageText() const { return messageText_; }

    static void beep();
    /// Beeps when there cannot be another one; saying why is the hook's.
    Q_INVOKABLE bool newWindow();
    /// What is found stands in a banner; that there is nothing, or what the hook tells, in a message.
    Q_INVOKABLE void checkForUpdates();
    Q_INVOKABLE void quit();
    Q_INVOKABLE void leavePractice();
    Q_INVOKABLE void showAbout() { show(Sheet::about); }
    Q_INVOKABLE void showChartKey() { showKeySheet(KeyTab::marks); }
    Q_INVOKABLE void showKeys() { showKeySheet(KeyTab::keys); }
    Q_INVOKABLE void closeSheet() { show(Sheet::none); }

 signals:
    void hooksChanged();
    void sheetChanged();
    void keyTabChanged();

 private:
    void show(Sheet sheet);
    void showKeySheet(KeyTab tab) {
        setKeyTab(tab);
        show(Sheet::chartKey);
    }

    Hooks hooks_;
    Sheet sheet_ = Sheet::none;
    KeyTab keyTab_ = KeyTab::marks;
    QString messageTitle_, messageText_;
};

}  // namespace vmr
