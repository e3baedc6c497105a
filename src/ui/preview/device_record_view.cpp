#include "ui/preview/device_record_view.h"

#include <QLabel>
#include <QPushButton>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr QColor kGround(0, 0, 0, 150);
constexpr QColor kLightColour(0xf0, 0x48, 0x4d);
constexpr int kHeight = 36;
constexpr int kRadius = 8;
constexpr int kMargin = 8;
constexpr int kGap = 6;
constexpr int kLightSize = 10;
constexpr int kButtonHeight = 24;
constexpr int kButtonPadding = 8;

int textWidth(const QLabel& label) {
    return label.fontMetrics().horizontalAdvance(label.text());
}

QLabel* makeLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setStyleSheet(KvWidgetUtils::labelColorStyle(0xffffff));
    KvWidgetUtils::setFont(label, orvelle::palette::kSmallFontPixels);
    return label;
}

QPushButton* makeButton(const char* key, const QString& style, QWidget* parent) {
    auto* button = new QPushButton(orvelle::text(key), parent);
    button->setStyleSheet(style);
    button->setCursor(Qt::PointingHandCursor);
    button->setFocusPolicy(Qt::TabFocus);
    KvWidgetUtils::setFont(button, orvelle::palette::kSmallFontPixels);
    return button;
}

}  // namespace

KvDeviceRecordView::KvDeviceRecordView(QWidget* parent)
    : KvWidget(parent),
      m_light(new KvWidget(this)),
      m_word(makeLabel(this)),
      m_time(makeLabel(this)),
      m_cancelButton(
          makeButton(orvelle::textKey("cancel"), KvWidgetUtils::secondaryButtonStyle(), this)),
      m_saveButton(
          makeButton(orvelle::textKey("save"), KvWidgetUtils::primaryButtonStyle(), this)) {
    setBackgroundColor(kGround);
    setBorder(0, kRadius);
    m_light->setBackgroundColor(kLightColour);
    m_light->setBorder(0, kLightSize / 2);
    m_word->setText(orvelle::text("video_has_been_recorded"));
    setTime(0.0);
}

void KvDeviceRecordView::setTime(double seconds) {
    const int whole = static_cast<int>(seconds);
    m_time->setText(QString::asprintf("%02d:%02d:%02d", whole / 3600, whole / 60 % 60, whole % 60));
}

void KvDeviceRecordView::setButtonsVisible(bool visible) {
    m_cancelButton->setVisible(visible);
    m_saveButton->setVisible(visible);
}

int KvDeviceRecordView::buttonWidth(const QPushButton& button) {
    return button.fontMetrics().horizontalAdvance(button.text()) + 2 * kButtonPadding;
}

int KvDeviceRecordView::wordWidth() const {
    return textWidth(*m_word) + kGap;
}

QSize KvDeviceRecordView::sizeWithin(int maxWidth) const {
    int needed = 2 * kMargin + kLightSize + kGap + textWidth(*m_time);
    for (const QPushButton* button : {m_cancelButton, m_saveButton})
        needed += button->isHidden() ? 0 : kGap + buttonWidth(*button);
    const bool hasWord = needed + wordWidth() <= maxWidth;
    return {hasWord ? needed + wordWidth() : needed, kHeight};
}

void KvDeviceRecordView::resizeEvent(QResizeEvent*) {
    int left = kMargin;
    const auto place = [&left](QWidget* widget, int width, int height) {
        widget->setGeometry(left, (kHeight - height) / 2, width, height);
        left += width + kGap;
    };
    place(m_light, kLightSize, kLightSize);
    const bool hasWord = width() >= sizeWithin(QWIDGETSIZE_MAX).width();
    m_word->setVisible(hasWord);
    if (hasWord)
        place(m_word, textWidth(*m_word), kHeight);
    place(m_time, textWidth(*m_time), kHeight);
    place(m_cancelButton, buttonWidth(*m_cancelButton), kButtonHeight);
    place(m_saveButton, buttonWidth(*m_saveButton), kButtonHeight);
}
