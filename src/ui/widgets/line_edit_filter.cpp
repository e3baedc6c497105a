#include "ui/widgets/line_edit_filter.h"

#include <QEvent>
#include <QLineEdit>

QLineEditFilter::QLineEditFilter(QLineEdit* edit)
    : QObject(edit), m_edit(edit), m_placeholder(edit->placeholderText()) {
    edit->installEventFilter(this);
}

bool QLineEditFilter::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_edit)
        return false;
    if (event->type() == QEvent::FocusIn) {
        m_edit->setPlaceholderText(QString());
    } else if (event->type() == QEvent::FocusOut) {
        m_edit->setPlaceholderText(m_placeholder);
        m_edit->clearFocus();
    }
    return false;
}
