// Folders and files for a sheet in which a person chooses one.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QVariantList>

namespace vmr {

/// Shows one folder: its folders, then its files with the suffix, each by name. Main thread.
class FileBrowser : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString suffix MEMBER suffix_ NOTIFY changed)  ///< such as ".json"; empty for any
    Q_PROPERTY(QString folder READ folder NOTIFY changed)
    Q_PROPERTY(QVariantList entries READ entries NOTIFY changed)  ///< { name, isFolder }

 public:
    using QObject::QObject;

    QString folder() const { return folder_; }
    QVariantList entries() const;

    /// Shows the folder, or the one above it where there is none; the person's own for an empty text.
    Q_INVOKABLE void show(const QString& folder);
    /// What a typed text means: from the shown folder on, "~" for the person's own.
    Q_INVOKABLE QString resolved(const QString& text) const;
    /// The same for a file to save, which gets the suffix where it has none.
    Q_INVOKABLE QString resolvedToSave(const QString& text) const;
    /// The text with as much more as all that begins so share; a folder that is alone gets its slash.
    Q_INVOKABLE QString completed(const QString& text) const;
    Q_INVOKABLE bool isFolder(const QString& path) const;
    Q_INVOKABLE bool exists(const QString& path) const;
    /// Why nothing can be opened there, or saved; empty for nothing.
    Q_INVOKABLE QString problem(const QString& path, bool saving) const;

 signals:
    void changed();

 private:
    QString suffix_, folder_;
};

}  // namespace vmr
