#include "ui/shell/PictureViewModel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSaveFile>
#include <utility>

namespace vmr {

void PictureViewModel::offer(QImage picture, const QString& proposal) {
    picture_ = std::move(picture);
    proposal_ = proposal;
    emit takenChanged();
}

QString PictureViewModel::size() const {
    return QStringLiteral("%1 × %2").arg(picture_.width()).arg(picture_.height());
}

QString PictureViewModel::save(const QString& file) {
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
