// A picture of the window that was just taken, and where it is to go.
#pragma once

#include <QImage>
#include <QObject>
#include <QQmlEngine>
#include <QString>

namespace vmr {

/// One for each window. Main thread.
class PictureViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the window's shell")
    Q_PROPERTY(bool taken READ taken NOTIFY takenChanged)
    Q_PROPERTY(QString size READ size NOTIFY takenChanged)
    Q_PROPERTY(QString suggestion READ suggestion NOTIFY takenChanged)

 public:
    using QObject::QObject;

    /// `name` is that of a file without folder and ending.
    void offer(QImage picture, const QString& name);

    bool taken() const { return !picture_.isNull(); }
    /// "1400 × 900".
    QString size() const;
    /// A file in the person's folder of pictures that is not there yet.
    QString suggestion() const { return suggestion_; }

    /// As a PNG, in place of what is there; returns why that failed, and keeps the picture then.
    Q_INVOKABLE QString save(const QString& file);
    /// To the clipboard.
    Q_INVOKABLE void copy();
    /// It is not wanted any more.
    Q_INVOKABLE void drop();

 signals:
    void takenChanged();

 private:
    QImage picture_;
    QString suggestion_;
};

}  // namespace vmr
