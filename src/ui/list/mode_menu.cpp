#include "ui/list/mode_menu.h"

#include <QApplication>
#include <QKeyEvent>

#include "ui/palette.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr int kWidth = 132;
constexpr int kRowHeight = 32;
constexpr int kBorder = 1;
constexpr int kRadius = 4;

QString labelStyle() {
    return QStringLiteral(
               "QLabel{color:%1;background:#ffffff;padding-left:12px;}"
               "QLabel:hover,QLabel:focus{color:%2;background:%3;}")
        .arg(QLatin1String(palette::kText), QLatin1String(palette::kAccentPressed),
             QLatin1String(palette::kAccentTint));
}

}  // namespace

ModeMenu::ModeMenu(const std::array<const char*, 3>& titleKeys, QWidget* parent)
    : KvWidget(parent),
      m_titleKeys(titleKeys),
      m_labels{new ClickLabel(this), new ClickLabel(this)} {
    setBackgroundColor(0xffffff, 255);
    setBorder(kBorder, kRadius, QColor(QLatin1String(palette::kFrame)));
    int top = kBorder;
    for (ClickLabel* label : m_labels) {
        KvWidgetUtils::setFont(label, palette::kFontPixels);
        label->setStyleSheet(labelStyle());
        label->setFocusPolicy(Qt::StrongFocus);
        label->setGeometry(kBorder, top, kWidth - 2 * kBorder, kRowHeight);
        top += kRowHeight;
    }
    resize(kWidth, top + kBorder);
    hide();
}

ModeMenu::~ModeMenu() {
    qApp->removeEventFilter(this);
}

void ModeMenu::open(const QPoint& corner, int mode) {
    auto label = m_labels.begin();
    for (int other = 0; other < static_cast<int>(m_titleKeys.size()); ++other) {
        if (other == mode)
            continue;
        (*label)->setTag(other);
        (*label)->setText(text(m_titleKeys[other]));
        ++label;
    }
    move(corner);
    raise();
    show();
    m_labels.front()->setFocus(Qt::PopupFocusReason);
    qApp->installEventFilter(this);
}

void ModeMenu::close() {
    qApp->removeEventFilter(this);
    const bool hadFocus = isAncestorOf(QApplication::focusWidget());
    hide();
    if (hadFocus && m_opener)
        m_opener->setFocus(Qt::PopupFocusReason);
}

bool ModeMenu::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && isVisible() && !isOutside(watched))
        return handleKey(static_cast<QKeyEvent*>(event)->key());
    const bool leaves =
        event->type() == QEvent::MouseButtonPress || event->type() == QEvent::FocusIn;
    if (leaves && watched->isWidgetType() && isOutside(watched) && watched != m_opener)
        close();
    return false;
}

bool ModeMenu::handleKey(int key) {
    if (key == Qt::Key_Escape)
        close();
    else if (key == Qt::Key_Down || key == Qt::Key_Up)
        focusNextPrevChild(key == Qt::Key_Down);
    else
        return false;
    return true;
}

// Tab stays inside, as in any menu.
bool ModeMenu::focusNextPrevChild(bool /*next*/) {
    const bool first = m_labels.front()->hasFocus();
    (first ? m_labels.back() : m_labels.front())->setFocus(Qt::PopupFocusReason);
    return true;
}

bool ModeMenu::isOutside(QObject* watched) const {
    return watched != this && watched != m_labels.front() && watched != m_labels.back();
}

}  // namespace orvelle
