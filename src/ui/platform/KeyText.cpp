#include "ui/platform/KeyText.h"

#include <QGuiApplication>
#include <QKeySequence>

namespace vmr {

namespace {
std::string nameOf(int key) {
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return "F" + std::to_string(key - Qt::Key_F1 + 1);
    switch (key) {
        case Qt::Key_Escape:
            return "Escape";
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            return "Tab";
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return "Return";
        case Qt::Key_Space:
            return "Space";
        case Qt::Key_Backspace:
            return "Backspace";
        case Qt::Key_Delete:
            return "Delete";
        case Qt::Key_Insert:
            return "Insert";
        case Qt::Key_Left:
            return "Left";
        case Qt::Key_Right:
            return "Right";
        case Qt::Key_Up:
            return "Up";
        case Qt::Key_Down:
            return "Down";
        case Qt::Key_Home:
            return "Home";
        case Qt::Key_End:
            return "End";
        case Qt::Key_PageUp:
            return "PageUp";
        case Qt::Key_PageDown:
            return "PageDown";
        default:
            return {};
    }
}
}  // namespace

KeyStroke keyStroke(int key, const QString& text, Qt::KeyboardModifiers modifiers) {
    KeyStroke out;
    out.control = modifiers & Qt::ControlModifier;
    out.alt = modifiers & Qt::AltModifier;
    out.shift = modifiers & Qt::ShiftModifier;
    out.meta = modifiers & Qt::MetaModifier;
    out.key = nameOf(key);
    if (!out.key.empty()) return out;
    const bool types = text.size() > 0 && text[0].isPrint() && !text[0].isSpace();
    // the key that gives a third sign counts as Ctrl and Alt on some platforms
    if (types && out.control && out.alt) out.control = out.alt = false;
    if (out.control || out.alt || out.meta) {
        if (key > Qt::Key_Space && key < 0x10000) out.key = QString(QChar(key)).toLower().toStdString();
    } else if (types) {
        out.key = text.toLower().toStdString();
    }
    return out;
}

QString digitOfRow(quint32 nativeScanCode) {
    const QString platform = QGuiApplication::platformName();
    const bool evdev = platform == QLatin1String("xcb") || platform.startsWith(QLatin1String("wayland"));
    const quint32 first = evdev ? 10 : platform == QLatin1String("windows") ? 2 : 0;
    if (first == 0 || nativeScanCode < first || nativeScanCode > first + 8) return {};
    return QString::number(nativeScanCode - first + 1);
}

}  // namespace vmr
