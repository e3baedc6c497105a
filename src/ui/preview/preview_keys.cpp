#include "ui/preview/preview_keys.h"

#include <QKeyEvent>
#include <QWidget>

#include <algorithm>
#include <array>

#include "ui/widgets/text.h"

namespace orvelle {

namespace {

struct Binding {
    int key;
    Qt::KeyboardModifiers modifiers;
    PreviewKey meaning;
    const char* name;
    bool isRepeated = false;
};

const std::array kBindings{
    Binding{Qt::Key_Space, Qt::NoModifier, PreviewKey::kPause, "Space"},
    Binding{Qt::Key_R, Qt::NoModifier, PreviewKey::kRecord, "R"},
    Binding{Qt::Key_S, Qt::NoModifier, PreviewKey::kSnapshot, "S"},
    Binding{Qt::Key_M, Qt::NoModifier, PreviewKey::kSound, "M"},
    Binding{Qt::Key_M, Qt::ShiftModifier, PreviewKey::kOnlyThisSound, "Shift+M"},
    Binding{Qt::Key_F, Qt::NoModifier, PreviewKey::kFullscreen, "F"},
    Binding{Qt::Key_F11, Qt::NoModifier, PreviewKey::kWholeGrid, "F11"},
    Binding{Qt::Key_Return, Qt::NoModifier, PreviewKey::kOpen, "Enter"},
    Binding{Qt::Key_Enter, Qt::NoModifier, PreviewKey::kOpen, "Enter"},
    Binding{Qt::Key_Plus, Qt::NoModifier, PreviewKey::kZoomIn, "+", true},
    Binding{Qt::Key_Equal, Qt::NoModifier, PreviewKey::kZoomIn, "+", true},
    Binding{Qt::Key_Minus, Qt::NoModifier, PreviewKey::kZoomOut, "-", true},
    Binding{Qt::Key_0, Qt::NoModifier, PreviewKey::kZoomReset, "0"},
    Binding{Qt::Key_Left, Qt::NoModifier, PreviewKey::kLeft, "Left", true},
    Binding{Qt::Key_Right, Qt::NoModifier, PreviewKey::kRight, "Right", true},
    Binding{Qt::Key_Up, Qt::NoModifier, PreviewKey::kUp, "Up", true},
    Binding{Qt::Key_Down, Qt::NoModifier, PreviewKey::kDown, "Down", true},
    Binding{Qt::Key_Left, Qt::ControlModifier, PreviewKey::kSwapLeft, "Ctrl+Left"},
    Binding{Qt::Key_Right, Qt::ControlModifier, PreviewKey::kSwapRight, "Ctrl+Right"},
    Binding{Qt::Key_Up, Qt::ControlModifier, PreviewKey::kSwapUp, "Ctrl+Up"},
    Binding{Qt::Key_Down, Qt::ControlModifier, PreviewKey::kSwapDown, "Ctrl+Down"},
    Binding{Qt::Key_1, Qt::NoModifier, PreviewKey::kLayout1, "1"},
    Binding{Qt::Key_2, Qt::NoModifier, PreviewKey::kLayout2, "2"},
    Binding{Qt::Key_3, Qt::NoModifier, PreviewKey::kLayout3, "3"},
    Binding{Qt::Key_4, Qt::NoModifier, PreviewKey::kLayout4, "4"},
    Binding{Qt::Key_5, Qt::NoModifier, PreviewKey::kLayout5, "5"},
    Binding{Qt::Key_6, Qt::NoModifier, PreviewKey::kLayout6, "6"},
    Binding{Qt::Key_Question, Qt::NoModifier, PreviewKey::kHelp, "?"},
};

/// Which layout of a keyboard needs Shift for these differs.
bool isShiftOpen(int key) {
    return key == Qt::Key_Question || key == Qt::Key_Plus;
}

}  // namespace

PreviewKey previewKey(const QKeyEvent& event) {
    Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    if (isShiftOpen(event.key()))
        modifiers &= ~Qt::ShiftModifier;
    for (const Binding& binding : kBindings) {
        if (binding.key == event.key() && binding.modifiers == modifiers &&
            (binding.isRepeated || !event.isAutoRepeat()))
            return binding.meaning;
    }
    return PreviewKey::kNone;
}

QString keyName(PreviewKey key) {
    const auto* const binding =
        std::find_if(kBindings.begin(), kBindings.end(),
                     [key](const Binding& each) { return each.meaning == key; });
    return binding == kBindings.end() ? QString() : QString::fromLatin1(binding->name);
}

void setKeyToolTip(QWidget* widget, const char* name, PreviewKey key) {
    const QString words = text(name);
    widget->setToolTip(QStringLiteral("%1 (%2)").arg(words, keyName(key)));
    widget->setAccessibleName(words);
}

QVector<KeyLine> keyLines() {
    const QString arrows = text("arrow_keys");
    return {
        {arrows, text("move_between_the_pictures")},
        {QStringLiteral("Ctrl + ") + arrows, text("swap_the_picture_with_its_neighbour")},
        {keyName(PreviewKey::kOpen), text("show_one_picture_or_all")},
        {keyName(PreviewKey::kPause), text("pause_or_play")},
        {keyName(PreviewKey::kRecord), text("start_or_stop_recording")},
        {keyName(PreviewKey::kSnapshot), text("screenshot")},
        {keyName(PreviewKey::kSound), text("sound_on_or_off")},
        {keyName(PreviewKey::kOnlyThisSound), text("hear_only_this_camera")},
        {QStringLiteral("+  -"), text("zoom_in_or_out")},
        {keyName(PreviewKey::kZoomReset), text("show_the_whole_picture")},
        {keyName(PreviewKey::kFullscreen), text("full_screen_of_one_picture")},
        {keyName(PreviewKey::kWholeGrid), text("full_screen_of_all_pictures")},
        {QStringLiteral("1 ... 6"), text("choose_the_layout")},
        {QStringLiteral("Esc"), text("leave_full_screen_or_the_pad")},
        {keyName(PreviewKey::kHelp), text("show_these_keys")},
    };
}

}  // namespace orvelle
