#include "ui/widgets/scroll_label.h"

#include <QLabel>

KvScrollLabel::KvScrollLabel(QWidget* parent) : QScrollArea(parent), m_label(new QLabel) {
    setFrameShape(QFrame::NoFrame);
    setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    setStyleSheet(QStringLiteral("QScrollArea{background-color:#ffffff;};"));
    m_label->setStyleSheet(QStringLiteral("QLabel{background-color:#ffffff;};"));
    m_label->setContentsMargins(5, 5, 5, 5);
    m_label->setWordWrap(true);
    setWidget(m_label);
    setWidgetResizable(true);
}

void KvScrollLabel::setText(const QString& text) {
    m_label->setText(text);
}
