// What a keyboard event says, as this program writes keys.
#pragma once

#include <QString>
#include <Qt>

#include "workspace/KeyChord.h"

namespace vmr {

/// `key` as Qt numbers it, `text` what it would type. With Ctrl, Alt or Meta the key's own sign counts, else what it
/// types on this keyboard. The key is empty where it is none by itself, as of Shift.
KeyStroke keyStroke(int key, const QString& text, Qt::KeyboardModifiers modifiers);

/// The digit of a key in the row above the letters, which on some keyboards types another sign without Shift; empty for
/// other keys, and where the platform does not tell.
QString digitOfRow(quint32 nativeScanCode);

}  // namespace vmr
