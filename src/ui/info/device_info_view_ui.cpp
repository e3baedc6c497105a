#include "ui/info/device_info_view_ui.h"

#include <QLabel>
#include <QPushButton>
#include <QtDebug>

#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::text;
using orvelle::textKey;

namespace {

constexpr int kHeaderHeight = 44;
constexpr int kMargin = 14;
constexpr int kBackSize = 24;
constexpr int kNoticeHeight = 36;
constexpr int kColumnWidth = 500;
constexpr int kSideMargin = 24;
constexpr int kCardPadding = 20;
constexpr int kCardGap = 12;
constexpr int kHeadingHeight = 40;
constexpr int kCardBottom = 10;
constexpr int kRowHeight = 30;
constexpr int kMinRowHeight = 22;
constexpr int kCaptionWidth = 170;
constexpr int kCopyWidth = 72;
constexpr int kCopyHeight = 24;
constexpr QSize kButtonSize(240, 40);
constexpr int kButtonGap = 20;
constexpr int kButtonLift = 8;
constexpr int kBottomMargin = 20;
constexpr int kCardRadius = 6;
constexpr unsigned kCardFrame = 0xe4e4e4;

QString imageButtonStyle(const char* name, const char* color) {
    return KvWidgetUtils::buttonStyle(KvWidgetUtils::imagesOf(QLatin1String(name))) +
           QStringLiteral("\nQPushButton{color:%1;}QPushButton:disabled{color:%2;}")
               .arg(QLatin1String(color), QLatin1String(orvelle::palette::kDisabled));
}

QLabel* makeLabel(QWidget* parent, int fontPixels, const QString& style) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setStyleSheet(style);
    KvWidgetUtils::setFont(label, fontPixels);
    return label;
}

QString colorStyle(const char* color) {
    return QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(color));
}

}  // namespace

KvTUTKDeviceInfoViewUI::KvTUTKDeviceInfoViewUI(QWidget* parent)
    : KvWidget(parent), m_back(new QPushButton(this)) {
    using namespace orvelle::palette;
    setBackgroundColor(QColor(QLatin1String(kSideBar)));
    m_back->setStyleSheet(
        KvWidgetUtils::buttonStyle(KvWidgetUtils::image(QStringLiteral("back_dark"))));
    m_back->setCursor(Qt::PointingHandCursor);
    KvWidgetUtils::setToolTip(m_back, "back_to_live");
    m_title = makeLabel(this, kTitleFontPixels, colorStyle(kText));
    m_title->setText(text("settings"));
    m_notice = makeLabel(this, kFontPixels, colorStyle(kWarningText));
    m_notice->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    addCard("device_information", kCameraName,
            {textKey("camera_name"), textKey("device_type"), textKey("firmware_version"),
             textKey("uid")});
    addCard("network", kNetworkName,
            {textKey("network_name"), textKey("ip_address"), textKey("mac_address")});
    addCard("sdcard_information", kFreeSpace, {textKey("avaiable_space"), textKey("total_space")});
    setUpButtons();
    clear();
}

void KvTUTKDeviceInfoViewUI::addCard(const char* heading, Row firstRow,
                                     const std::vector<const char*>& captions) {
    using namespace orvelle::palette;
    auto* frame = new KvWidget(this);
    frame->setBackgroundColor(0xffffff, 255);
    frame->setBorder(1, kCardRadius, QColor(kCardFrame));
    Card card{frame, makeLabel(frame, kTitleFontPixels, colorStyle(kText)), firstRow,
              static_cast<int>(captions.size())};
    card.heading->setText(text(heading));
    for (int i = 0; i < card.rows; ++i) {
        const auto row = static_cast<size_t>(firstRow + i);
        m_captions.at(row) =
            makeLabel(frame, kFontPixels, KvWidgetUtils::labelColorStyle(0x666666));
        m_captions.at(row)->setText(text(captions.at(static_cast<size_t>(i))));
        m_values.at(row) = makeLabel(frame, kFontPixels, colorStyle(kAccentPressed));
        m_values.at(row)->setTextInteractionFlags(Qt::TextSelectableByMouse);
        m_values.at(row)->setFocusPolicy(Qt::NoFocus);
    }
    m_cards.push_back(card);
}

void KvTUTKDeviceInfoViewUI::setUpButtons() {
    using namespace orvelle::palette;
    m_copy = new QPushButton(text("copy"), m_values.at(kUid)->parentWidget());
    m_copy->setStyleSheet(KvWidgetUtils::secondaryButtonStyle());
    m_copy->setAccessibleName(text("copy_the_uid"));
    m_copy->setToolTip(KvWidgetUtils::toolTipText(text("copy_the_uid")));
    KvWidgetUtils::setFont(m_copy, kSmallFontPixels);
    m_copy->setCursor(Qt::PointingHandCursor);
    m_cleanup = new QPushButton(text("sdcard_cleanup"), this);
    m_cleanup->setStyleSheet(imageButtonStyle("cleanup", kAccentPressed));
    m_unbind = new QPushButton(text("unbind_camera"), this);
    m_unbind->setStyleSheet(imageButtonStyle("unbind", kWarningText));
    for (QPushButton* button : {m_cleanup, m_unbind}) {
        KvWidgetUtils::setFont(button, kFontPixels);
        button->setCursor(Qt::PointingHandCursor);
    }
}

void KvTUTKDeviceInfoViewUI::clear() {
    for (int row = 0; row < kRows; ++row)
        setValue(static_cast<Row>(row), QString());
    setCleanupEnabled(false);
    setNotice(QString());
}

void KvTUTKDeviceInfoViewUI::setValue(Row row, const QString& value) {
    m_texts.at(row) = value.isEmpty() ? QStringLiteral("-") : value.simplified();
    showElided(row);
}

QString KvTUTKDeviceInfoViewUI::value(Row row) const {
    return m_texts.at(row);
}

void KvTUTKDeviceInfoViewUI::showElided(Row row) {
    QLabel* label = m_values.at(row);
    const QString& whole = m_texts.at(row);
    const QString shown =
        label->fontMetrics().elidedText(whole, Qt::ElideRight, qMax(0, label->width()));
    label->setText(shown);
    label->setToolTip(shown == whole ? QString() : whole);
}

void KvTUTKDeviceInfoViewUI::setCleanupEnabled(bool enabled) {
    m_canCleanUp = enabled;
    setButtonEnabled(m_cleanup, enabled && !isLoading());
}

void KvTUTKDeviceInfoViewUI::setButtonEnabled(QPushButton* button, bool enabled) {
    // Else the toolkit hands the focus to the next widget of the window, wherever that is.
    if (!enabled && window()->focusWidget() == button)
        parentWidget()->setFocus(Qt::OtherFocusReason);
    button->setEnabled(enabled);
}

void KvTUTKDeviceInfoViewUI::setNotice(const QString& notice) {
    m_notice->setText(notice);
}

QString KvTUTKDeviceInfoViewUI::notice() const {
    return m_notice->text();
}

QRect KvTUTKDeviceInfoViewUI::loadingArea() const {
    return rect().adjusted(0, kHeaderHeight, 0, 0);
}

void KvTUTKDeviceInfoViewUI::showLoading(const QString& text) {
    m_loading.setText(text);
    m_loading.showOver(this, loadingArea());
    setButtonEnabled(m_cleanup, false);
    setButtonEnabled(m_unbind, false);
    layOut();
}

void KvTUTKDeviceInfoViewUI::hideLoading() {
    m_loading.hideOver();
    setButtonEnabled(m_cleanup, m_canCleanUp);
    setButtonEnabled(m_unbind, true);
}

void KvTUTKDeviceInfoViewUI::resizeEvent(QResizeEvent*) {
    layOut();
}

void KvTUTKDeviceInfoViewUI::layOut() {
    m_back->setGeometry(kMargin, (kHeaderHeight - kBackSize) / 2, kBackSize, kBackSize);
    const int titleLeft = 2 * kMargin + kBackSize;
    m_title->setGeometry(titleLeft, 0, qMax(0, width() - titleLeft - kMargin), kHeaderHeight);
    const int column = qBound(0, width() - 2 * kSideMargin, kColumnWidth);
    const int left = (width() - column) / 2;
    m_notice->setGeometry(left, kHeaderHeight, column, kNoticeHeight);

    const int frames = static_cast<int>(m_cards.size());
    const int fixed = kHeaderHeight + kNoticeHeight +
                      frames * (kHeadingHeight + kCardBottom + kCardGap) + kButtonSize.height() +
                      kButtonLift + kBottomMargin;
    const int rowHeight = qBound(kMinRowHeight, (height() - fixed) / kRows, kRowHeight);
    int top = kHeaderHeight + kNoticeHeight;
    for (const Card& card : m_cards) {
        const int height = kHeadingHeight + card.rows * rowHeight + kCardBottom;
        card.frame->setGeometry(left, top, column, height);
        layOutCard(card, rowHeight);
        top += height + kCardGap;
    }
    top += kButtonLift;
    const int buttonLeft = left + (column - 2 * kButtonSize.width() - kButtonGap) / 2;
    m_cleanup->setGeometry({{buttonLeft, top}, kButtonSize});
    m_unbind->setGeometry({{buttonLeft + kButtonSize.width() + kButtonGap, top}, kButtonSize});
    if (!isLoading())
        return;
    const QRect area = loadingArea();
    qDebug("loadingView->setGeometry(%d, %d, %d, %d)", area.x(), area.y(), area.width(),
           area.height());
    m_loading.setGeometry(area);
}

void KvTUTKDeviceInfoViewUI::layOutCard(const Card& card, int rowHeight) {
    const int inner = card.frame->width() - 2 * kCardPadding;
    card.heading->setGeometry(kCardPadding, 0, inner, kHeadingHeight);
    for (int i = 0; i < card.rows; ++i) {
        const auto row = static_cast<Row>(card.firstRow + i);
        const int top = kHeadingHeight + i * rowHeight;
        m_captions.at(row)->setGeometry(kCardPadding, top, kCaptionWidth, rowHeight);
        const int free = inner - kCaptionWidth - (row == kUid ? kCopyWidth + kCardPadding : 0);
        m_values.at(row)->setGeometry(kCardPadding + kCaptionWidth, top, qMax(0, free), rowHeight);
        if (row == kUid)
            m_copy->setGeometry(kCardPadding + inner - kCopyWidth,
                                top + (rowHeight - kCopyHeight) / 2, kCopyWidth, kCopyHeight);
        showElided(row);
    }
}
