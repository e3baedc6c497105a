#include "ui/main/guide_view.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr QSize kOkSize(80, 25);

}  // namespace

KvGuideView::KvGuideView(const QString& language, QWidget* parent)
    : KvWidget(parent),
      m_image(new QLabel(this)),
      m_text(new QTextBrowser(this)),
      m_ok(new QPushButton(orvelle::text("i_known"), this)) {
    const QString image = language == QLatin1String("chinese") ? QStringLiteral("home_guide_cn")
                                                               : QStringLiteral("home_guide_en");
    m_image->setPixmap(QPixmap(KvWidgetUtils::image(image)));
    m_image->setScaledContents(true);
    m_text->setStyleSheet(
        QStringLiteral("QTextBrowser{background-color:#00000000;border-width:0;"
                       "border-style:outset;color:#ffffff;};"));
    m_text->setAlignment(Qt::AlignCenter);
    m_text->setFocusPolicy(Qt::NoFocus);
    KvWidgetUtils::setFont(m_text, orvelle::palette::kFontPixels);
    m_text->setGeometry(QRect());
    m_ok->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_ok->setCursor(Qt::PointingHandCursor);
    m_ok->setAutoDefault(true);
    KvWidgetUtils::setFont(m_ok, orvelle::palette::kFontPixels);
    connect(m_ok, &QPushButton::clicked, this, &KvGuideView::_onClickOKButton);
}

void KvGuideView::resizeEvent(QResizeEvent*) {
    m_image->setGeometry(rect());
    m_ok->setGeometry((width() - kOkSize.width()) / 2, (height() - kOkSize.height()) / 2,
                      kOkSize.width(), kOkSize.height());
}

void KvGuideView::showEvent(QShowEvent*) {
    m_ok->setFocus();
}

/// What lies under the guide is out of reach until it is closed.
bool KvGuideView::focusNextPrevChild(bool) {
    m_ok->setFocus(Qt::TabFocusReason);
    return true;
}

void KvGuideView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape:
            emit clickOkButton();
            break;
        default:
            KvWidget::keyPressEvent(event);
    }
}

void KvGuideView::_onClickOKButton(bool) {
    emit clickOkButton();
}
