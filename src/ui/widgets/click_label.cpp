#include "ui/widgets/click_label.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace {

bool isClickKey(const QKeyEvent& event) {
    const int key = event.key();
    return !event.isAutoRepeat() &&
           (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter);
}

bool isClick(const QMouseEvent& event, const QWidget& label) {
    return event.button() == Qt::LeftButton && label.rect().contains(event.pos());
}

}  // namespace

KvClickLabel::KvClickLabel(QWidget* parent) : QLabel(parent) {
    setCursor(Qt::PointingHandCursor);
}

KvClickLabel::KvClickLabel(const QString& text, QWidget* parent) : KvClickLabel(parent) {
    setText(text);
}

// Whoever takes the press gets the release; the base class lets both pass to the parent.
void KvClickLabel::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void KvClickLabel::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (isClick(*event, *this))
        emit click(false);
}

void KvClickLabel::keyPressEvent(QKeyEvent* event) {
    if (isClickKey(*event))
        emit click(false);
    else
        QLabel::keyPressEvent(event);
}

ClickLabel::ClickLabel(QWidget* parent) : QLabel(parent) {
    setCursor(Qt::PointingHandCursor);
}

void ClickLabel::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void ClickLabel::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (isClick(*event, *this))
        emit click();
}

void ClickLabel::keyPressEvent(QKeyEvent* event) {
    if (isClickKey(*event))
        emit click();
    else
        QLabel::keyPressEvent(event);
}
