#include "ui/widgets/FileBrowser.h"

#include <QDir>
#include <QFileInfo>

namespace vmr {

namespace {
constexpr qsizetype mostEntries = 500;
}

QVariantList FileBrowser::entries() const {
    QVariantList out;
    const QDir dir(folder_);
    const auto add = [&out](const QStringList& names, bool isFolder) {
        for (const QString& name : names) {
            if (out.size() >= mostEntries) return;
            out.push_back(QVariantMap{{QStringLiteral("name"), name}, {QStringLiteral("isFolder"), isFolder}});
        }
    };
    const auto order = QDir::Name | QDir::IgnoreCase;
    add(dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, order), true);
    const QStringList filter = suffix_.isEmpty() ? QStringList() : QStringList(QStringLiteral("*") + suffix_);
    add(dir.entryList(filter, QDir::Files, order), false);
    return out;
}

void FileBrowser::show(const QString& folder) {
    QDir dir(folder.isEmpty() ? QDir::homePath() : folder);
    while (!dir.exists()) {
        const QString above = QFileInfo(dir.absolutePath()).path();
        if (above == dir.absolutePath()) break;
        dir.setPath(above);
    }
    folder_ = dir.absolutePath();
    emit changed();
}

QString FileBrowser::resolved(const QString& text) const {
    QString path = text.trimmed();
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/"))) path = QDir::homePath() + path.mid(1);
    return QDir::cleanPath(QDir(folder_).absoluteFilePath(path));
}

QString FileBrowser::resolvedToSave(const QString& text) const {
    const QString path = resolved(text);
    const bool named = !text.trimmed().isEmpty() && !text.trimmed().endsWith(QLatin1Char('/')) && !isFolder(path);
    return named && QFileInfo(path).suffix().isEmpty() ? path + suffix_ : path;
}

QString FileBrowser::completed(const QString& text) const {
    const qsizetype slash = text.lastIndexOf(QLatin1Char('/'));
    const QString above = text.left(slash + 1), begun = text.mid(slash + 1);
    const QDir dir(above.isEmpty() ? folder_ : resolved(above));
    QStringList matching;
    for (const QString& name : dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name))
        if (name.startsWith(begun) && (!begun.isEmpty() || !name.startsWith(QLatin1Char('.'))))
            matching.push_back(name);
    if (matching.isEmpty()) return text;
    QString shared = matching.front();
    for (const QString& name : matching)
        while (!name.startsWith(shared)) shared.chop(1);
    const bool folder = matching.size() == 1 && isFolder(dir.filePath(shared));
    return above + shared + (folder ? QStringLiteral("/") : QString());
}

bool FileBrowser::isFolder(const QString& path) const { return QFileInfo(path).isDir(); }

bool FileBrowser::exists(const QString& path) const { return QFileInfo::exists(path); }

QString FileBrowser::problem(const QString& path, bool saving) const {
    const QFileInfo file(path);
    if (file.isDir()) return tr("%1 is a folder").arg(path);
    if (!saving) {
        if (!file.isFile()) return tr("There is no file %1").arg(path);
        return file.isReadable() ? QString() : tr("%1 cannot be read").arg(path);
    }
    const QFileInfo folder(file.path());
    if (!folder.isDir()) return tr("There is no folder %1").arg(folder.filePath());
    return folder.isWritable() ? QString() : tr("Nothing can be saved in %1").arg(folder.filePath());
}

}  // namespace vmr
