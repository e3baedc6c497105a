#include "ui/widgets/name_width.h"

#include <QLineEdit>

namespace orvelle {

namespace {

constexpr ushort kFirstWideCode = 256;

// A pair of surrogates is one character.
int unitsAt(const QString& text, int index) {
    return text.at(index).isHighSurrogate() && index + 1 < text.size() &&
                   text.at(index + 1).isLowSurrogate()
               ? 2
               : 1;
}

int widthAt(const QString& text, int index) {
    return text.at(index).unicode() < kFirstWideCode ? 1 : 2;
}

}  // namespace

int nameWidth(const QString& name) {
    int width = 0;
    for (int i = 0; i < name.size(); i += unitsAt(name, i))
        width += widthAt(name, i);
    return width;
}

QString cutToWidth(const QString& name, int maximum) {
    if (maximum < 0)
        return name;
    int width = 0;
    for (int i = 0; i < name.size(); i += unitsAt(name, i)) {
        width += widthAt(name, i);
        if (width > maximum)
            return name.left(i);
    }
    return name;
}

void cutToWidth(QLineEdit& edit, int maximum) {
    const QString cut = cutToWidth(edit.text(), maximum);
    if (cut == edit.text())
        return;
    const int cursor = edit.cursorPosition();
    edit.setText(cut);
    edit.setCursorPosition(qMin(cursor, cut.size()));
}

}  // namespace orvelle
