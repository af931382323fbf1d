// Keys that are held down.
#pragma once

#include <QObject>
#include <cstdint>

class QGuiApplication;

namespace vmr {

/// X11 tells of a held key as of one that goes up and comes down again at the same moment, over and over. Qt marks
/// those as repetitions where both events have arrived, and on a busy machine the second one may not have: then holding
/// a key would press a button, or an order, again and again. This marks such a press, for every window. Main thread.
class HeldKeys : public QObject {
 public:
    /// The application outlives it.
    explicit HeldKeys(QGuiApplication& application);

 protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    std::uint64_t releasedAt_ = 0;
    int released_ = 0;  // the key
};

}  // namespace vmr
