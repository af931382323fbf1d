#include "ui/shell/PictureViewModel.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QSaveFile>
#include <QStandardPaths>
#include <utility>

namespace vmr {

namespace {
QString freeFile(const QString& name) {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) folder = QDir::homePath();
    QString file = folder + QLatin1Char('/') + name + QStringLiteral(".png");
    for (int i = 2; QFileInfo::exists(file); ++i)
        file = QStringLiteral("%1/%2-%3.png").arg(folder, name, QString::number(i));
    return file;
}
}  // namespace

void PictureViewModel::offer(QImage picture, const QString& name) {
    picture_ = std::move(picture);
    suggestion_ = freeFile(name);
    emit takenChanged();
}

QString PictureViewModel::size() const {
    return QStringLiteral("%1 × %2").arg(picture_.width()).arg(picture_.height());
}

QString PictureViewModel::save(const QString& file) {
    if (file.trimmed().isEmpty()) return tr("A file needs a name");
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly) || !picture_.save(&out, "PNG") || !out.commit())
        return tr("It cannot be saved there: %1").arg(out.errorString());
    drop();
    return {};
}

void PictureViewModel::copy() {
    if (taken()) QGuiApplication::clipboard()->setImage(picture_);
    drop();
}

void PictureViewModel::drop() {
    if (!std::exchange(picture_, QImage()).isNull()) emit takenChanged();
}

}  // namespace vmr
