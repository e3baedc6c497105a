#include "ui/widgets/toast_dialog.h"

#include <QKeyEvent>
#include <QLabel>

#include "ui/palette.h"
#include "ui/widgets/placement.h"
#include "ui/widgets/widget_utils.h"

static constexpr int kMaxTextWidth = 480;

KvToastDialog::KvToastDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_label(new QLabel(this)) {
    // A window without a compositor cannot have round corners.
    setStyleSheet(QStringLiteral("QDialog{background-color:white; border: 1px solid #CCCCCC;}"));
    m_label->setTextFormat(Qt::PlainText);
    m_label->setAlignment(Qt::AlignCenter);
    KvWidgetUtils::setFont(m_label, orvelle::palette::kFontPixels);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &QDialog::accept);
}

void KvToastDialog::setPaddings(int horizontal, int vertical) {
    m_horizontalPadding = horizontal;
    m_verticalPadding = vertical;
    fitText();
}

void KvToastDialog::setText(const QString& text) {
    m_label->setText(text);
    fitText();
}

void KvToastDialog::fitText() {
    m_label->setWordWrap(false);
    QSize size = m_label->sizeHint();
    if (size.width() > kMaxTextWidth) {
        m_label->setWordWrap(true);
        size = QSize(kMaxTextWidth, m_label->heightForWidth(kMaxTextWidth));
    }
    m_label->setGeometry(QRect(QPoint(m_horizontalPadding, m_verticalPadding), size));
    resize(size + QSize(2 * m_horizontalPadding, 2 * m_verticalPadding));
}

int KvToastDialog::run(int ms, int leftInset) {
    if (parentWidget())
        orvelle::centreOver(*this, *parentWidget(), leftInset);
    m_timer.start(ms);
    return exec();
}

void KvToastDialog::mouseReleaseEvent(QMouseEvent*) {
    accept();
}

void KvToastDialog::keyPressEvent(QKeyEvent* event) {
    // The one that led here may still be down.
    if (!event->isAutoRepeat())
        accept();
}
