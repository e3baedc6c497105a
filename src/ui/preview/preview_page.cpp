#include "ui/preview/preview_page.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include "device/device.h"
#include "ui/palette.h"
#include "ui/widgets/widget_utils.h"

namespace orvelle {

namespace {

constexpr int kHeaderHeight = 44;
constexpr int kMargin = 14;
constexpr int kButtonSize = 24;

}  // namespace

PreviewPage::PreviewPage(const QString& title, QWidget* parent)
    : KvWidget(parent),
      m_titleText(title),
      m_backButton(new QPushButton(this)),
      m_title(new QLabel(this)) {
    setBackgroundColor(0xffffff, 255);
    setFocusPolicy(Qt::StrongFocus);
    m_backButton->setStyleSheet(
        KvWidgetUtils::buttonStyle(KvWidgetUtils::image(QStringLiteral("back_dark"))));
    m_backButton->setCursor(Qt::PointingHandCursor);
    KvWidgetUtils::setToolTip(m_backButton, "back_to_live");
    m_title->setTextFormat(Qt::PlainText);
    m_title->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(palette::kText)));
    KvWidgetUtils::setFont(m_title, palette::kTitleFontPixels);
    connect(m_backButton, &QPushButton::clicked, this, &PreviewPage::clickBackButton);
}

void PreviewPage::setDevice(KvDevice* device) {
    m_device = device;
    m_title->setText(device ? m_titleText + QStringLiteral(" - ") + device->displayName()
                            : QString());
}

void PreviewPage::resizeEvent(QResizeEvent*) {
    m_backButton->setGeometry(kMargin, (kHeaderHeight - kButtonSize) / 2, kButtonSize, kButtonSize);
    const int left = 2 * kMargin + kButtonSize;
    m_title->setGeometry(left, 0, qMax(0, width() - left - kMargin), kHeaderHeight);
}

void PreviewPage::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        emit clickBackButton();
    else
        KvWidget::keyPressEvent(event);
}

}  // namespace orvelle
