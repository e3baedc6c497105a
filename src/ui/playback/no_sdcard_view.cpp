#include "ui/playback/no_sdcard_view.h"

#include <QLabel>

#include "ui/palette.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr int kSignSize = 72;
constexpr int kGap = 16;
constexpr int kTextHeight = 24;
constexpr int kLinkPadding = 8;

}  // namespace

KvNoSdcardView::KvNoSdcardView(QWidget* parent)
    : KvWidget(parent),
      m_sign(new QLabel(this)),
      m_text(new QLabel(orvelle::text("please_check_the_sd_card"), this)),
      m_back(new KvClickLabel(orvelle::text("back_to_live"), this)) {
    m_sign->setStyleSheet(
        KvWidgetUtils::labelImageStyle(KvWidgetUtils::image(QStringLiteral("sd_big"))));
    m_text->setStyleSheet(KvWidgetUtils::labelColorStyle(0xffffff));
    m_back->setStyleSheet(QStringLiteral("QLabel{color:#daa064;};"));
    m_back->setFocusPolicy(Qt::TabFocus);
    m_back->setAccessibleName(m_back->text());
    for (QLabel* label : {m_text, static_cast<QLabel*>(m_back)}) {
        KvWidgetUtils::setFont(label, orvelle::palette::kTitleFontPixels);
        label->setAlignment(Qt::AlignCenter);
    }
}

void KvNoSdcardView::resizeEvent(QResizeEvent*) {
    const int top = (height() - kSignSize - 2 * (kGap + kTextHeight)) / 2;
    m_sign->setGeometry((width() - kSignSize) / 2, top, kSignSize, kSignSize);
    m_text->setGeometry(0, top + kSignSize + kGap, width(), kTextHeight);
    // Only the words are to be clicked.
    const int linkWidth =
        m_back->fontMetrics().horizontalAdvance(m_back->text()) + 2 * kLinkPadding;
    m_back->setGeometry((width() - linkWidth) / 2, m_text->geometry().bottom() + kGap, linkWidth,
                        kTextHeight);
}
