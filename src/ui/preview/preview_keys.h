#pragma once

#include <QString>
#include <QVector>

class QKeyEvent;
class QWidget;

namespace orvelle {

/// What the keys do while live pictures are watched.
enum class PreviewKey {
    kNone,
    kPause,
    kRecord,
    kSnapshot,
    kSound,
    kOnlyThisSound,
    kFullscreen,
    kWholeGrid,
    kOpen,
    kZoomIn,
    kZoomOut,
    kZoomReset,
    kLeft,
    kRight,
    kUp,
    kDown,
    kSwapLeft,
    kSwapRight,
    kSwapUp,
    kSwapDown,
    kLayout1,  ///< the layouts in the order of their buttons; kLayout6 is the last
    kLayout2,
    kLayout3,
    kLayout4,
    kLayout5,
    kLayout6,
    kHelp,
};

/// A key that is held down means only what may well be done again and again.
PreviewKey previewKey(const QKeyEvent& event);

/// As it stands on the keyboard, for instance "Shift+M"; of the layouts and directions, of each.
QString keyName(PreviewKey key);

/// The text called `name` and the key as tooltip; the text alone as accessible name.
void setKeyToolTip(QWidget* widget, const char* name, PreviewKey key);

/// The list of all keys, for people.
struct KeyLine {
    QString keys;
    QString meaning;
};
QVector<KeyLine> keyLines();

}  // namespace orvelle
