#include "ui/list/cameras_view_ui.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "ui/list/device_group_adapter.h"
#include "ui/list/list_view.h"
#include "ui/list/mode_menu.h"
#include "ui/palette.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using orvelle::textKey;

namespace {

constexpr std::array<const char*, 3> kTitleKeys{textKey("all_cameras"), textKey("device_list"),
                                                textKey("group_list")};
constexpr int kMargin = 10;
constexpr int kTitleTop = 14;
constexpr int kTitleHeight = 24;
constexpr int kArrowSize = 12;
constexpr int kArrowGap = 5;
constexpr int kButtonSize = 24;
constexpr int kButtonGap = 4;
constexpr int kFilterTop = 50;
constexpr int kFilterHeight = 30;
constexpr int kListTop = 86;
constexpr int kListInset = 4;  // leaves room for the focus ring
constexpr int kNoticeHeight = 130;

}  // namespace

KvCamerasViewUI::KvCamerasViewUI(QWidget* parent)
    : KvWidget(parent),
      m_title(new KvClickLabel(this)),
      m_titleArrow(new QLabel(m_title)),
      m_searchButton(new QPushButton(this)),
      m_addButton(new QPushButton(this)),
      m_groupButton(new QPushButton(this)),
      m_filter(new QLineEdit(this)),
      m_adapter(new KvDeviceGroupAdapter(this)),
      m_list(new KvListView(this)),
      m_notice(new QLabel(this)),
      m_modeMenu(new orvelle::ModeMenu(kTitleKeys, this)) {
    setBackgroundColor(0xffffff, 255);
    setUpTitle();
    KvWidgetUtils::setUpImageButton(m_searchButton, QStringLiteral("lan"), "search_local_network");
    KvWidgetUtils::setUpImageButton(m_addButton, QStringLiteral("add"), "add_device");
    KvWidgetUtils::setUpImageButton(m_groupButton, QStringLiteral("group"), "add_group");
    setUpFilter();
    m_list->setAccessibleName(orvelle::text("all_cameras"));
    m_list->setAdapter(m_adapter);
    setUpNotice();
}

void KvCamerasViewUI::setUpTitle() {
    QFont font = KvWidgetUtils::font(orvelle::palette::kFontPixels);
    font.setBold(true);
    m_title->setFont(font);
    m_title->setStyleSheet(
        QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(orvelle::palette::kText)));
    m_title->setFocusPolicy(Qt::StrongFocus);
    m_titleArrow->setStyleSheet(
        KvWidgetUtils::labelImageStyle(KvWidgetUtils::image(QStringLiteral("drop_down"))));
    m_titleArrow->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_modeMenu->setOpener(m_title);
}

void KvCamerasViewUI::setUpFilter() {
    const QString prompt = orvelle::text("live_feed_group");
    KvWidgetUtils::setUpLineEdit(m_filter, KvWidgetUtils::roundLineEditStyle(), prompt);
    KvWidgetUtils::setFont(m_filter, orvelle::palette::kSmallFontPixels);
    m_filter->setAccessibleName(prompt);
    m_filter->setClearButtonEnabled(true);
}

void KvCamerasViewUI::setUpNotice() {
    m_notice->setStyleSheet(
        QStringLiteral("QLabel{border: 1px solid #CCCCCC;background-color:#ffffff;color:%1;"
                       "padding:8px;};")
            .arg(QLatin1String(orvelle::palette::kFaintText)));
    KvWidgetUtils::setFont(m_notice, orvelle::palette::kSmallFontPixels);
    m_notice->setAlignment(Qt::AlignCenter);
    m_notice->setWordWrap(true);
    m_notice->hide();
}

void KvCamerasViewUI::showMode(int mode) {
    const QString title = orvelle::text(kTitleKeys[static_cast<size_t>(mode)]);
    m_title->setText(title);
    m_title->setAccessibleName(title);
    layOutTitle();
}

void KvCamerasViewUI::toggleModeMenu(int mode) {
    if (m_modeMenu->isHidden())
        m_modeMenu->open(m_title->geometry().bottomLeft() + QPoint(0, kArrowGap), mode);
    else
        m_modeMenu->close();
}

void KvCamerasViewUI::closeModeMenu() {
    m_modeMenu->close();
}

void KvCamerasViewUI::showNotice(const QString& text) {
    // Else the toolkit hands the focus to the next widget, wherever that is.
    if (!text.isEmpty() && window()->focusWidget() == m_list)
        m_filter->setFocus();
    m_notice->setText(text);
    m_notice->setVisible(!text.isEmpty());
    m_list->setVisible(text.isEmpty());
}

void KvCamerasViewUI::resizeEvent(QResizeEvent* /*event*/) {
    layOut();
}

void KvCamerasViewUI::layOut() {
    layOutTitle();
    int right = width() - kMargin;
    for (QPushButton* button : {m_groupButton, m_addButton, m_searchButton}) {
        button->setGeometry(right - kButtonSize, kTitleTop, kButtonSize, kButtonSize);
        right -= kButtonSize + kButtonGap;
    }
    m_filter->setGeometry(kMargin, kFilterTop, width() - 2 * kMargin, kFilterHeight);
    m_list->setGeometry(kListInset, kListTop, width() - 2 * kListInset,
                        height() - kListTop - kMargin);
    m_notice->setGeometry(kMargin, kListTop + kMargin, width() - 2 * kMargin, kNoticeHeight);
}

void KvCamerasViewUI::layOutTitle() {
    const int textWidth = m_title->fontMetrics().horizontalAdvance(m_title->text());
    m_title->setGeometry(kMargin, kTitleTop, textWidth + kArrowGap + kArrowSize, kTitleHeight);
    m_titleArrow->setGeometry(textWidth + kArrowGap, (kTitleHeight - kArrowSize) / 2, kArrowSize,
                              kArrowSize);
}
