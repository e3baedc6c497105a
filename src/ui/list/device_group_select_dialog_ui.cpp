#include "ui/list/device_group_select_dialog_ui.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "ui/list/device_group_remove_adapter.h"
#include "ui/list/device_group_select_adapter.h"
#include "ui/list/list_view.h"
#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

using namespace orvelle::palette;

constexpr int kCloseSize = 24;
constexpr int kCloseMargin = 10;
constexpr int kTitleTop = 20;
constexpr int kTitleHeight = 24;
constexpr int kNameTop = 58;
constexpr int kHeadingTop = 108;
constexpr int kHeadingHeight = 24;
constexpr int kListTop = 136;
constexpr int kColumnGap = 16;
constexpr int kFrameWidth = 1;
constexpr QSize kOkSize(140, 30);
constexpr int kOkGap = 18;

constexpr int kColumnWidth =
    (KvDeviceGroupSelectDialogUI::kSize.width() - 2 * kDialogMargin - kColumnGap) / 2;

}  // namespace

KvDeviceGroupSelectDialogUI::KvDeviceGroupSelectDialogUI(QWidget* parent)
    : KvWidget(parent),
      m_title(new QLabel(this)),
      m_nameEdit(new QLineEdit(this)),
      m_cameraHeading(new QLabel(this)),
      m_counter(new QLabel(this)),
      m_cameraFrame(new KvWidget(this)),
      m_chosenFrame(new KvWidget(this)),
      m_cameraAdapter(new KvDeviceGroupSelectAdapter(this)),
      m_chosenAdapter(new KvDeviceGroupRemoveAdapter(this)),
      m_cameraList(new KvListView(this)),
      m_chosenList(new KvListView(this)),
      m_chosenHint(new QLabel(this)),
      m_okButton(new QPushButton(this)),
      m_closeButton(new QPushButton(this)) {
    setUpLabels();
    setUpLists();
    setUpOkButton();
    const QString namePrompt = orvelle::text("input_name");
    KvWidgetUtils::setUpLineEdit(m_nameEdit, KvWidgetUtils::lineEditStyle(), namePrompt);
    m_nameEdit->setAccessibleName(namePrompt);
    KvWidgetUtils::setFont(m_nameEdit, kFontPixels);
    KvWidgetUtils::setUpImageButton(m_closeButton, QStringLiteral("close"), "close");
    m_closeButton->setAutoDefault(false);
}

void KvDeviceGroupSelectDialogUI::setUpLabels() {
    const QString style = QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(kText));
    for (QLabel* label : {m_title, m_cameraHeading, m_counter}) {
        label->setStyleSheet(style);
        KvWidgetUtils::setFont(label, label == m_title ? kTitleFontPixels : kFontPixels);
    }
    m_cameraHeading->setText(orvelle::text("device_list"));
    m_chosenHint->setStyleSheet(
        QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(kPlaceholder)));
    KvWidgetUtils::setFont(m_chosenHint, kFontPixels);
    m_chosenHint->setText(orvelle::text("select_two_camera_at_least"));
    m_chosenHint->setAlignment(Qt::AlignCenter);
    m_chosenHint->setWordWrap(true);
    m_chosenHint->setMargin(kColumnGap);
}

void KvDeviceGroupSelectDialogUI::setUpLists() {
    for (KvWidget* frame : {m_cameraFrame, m_chosenFrame})
        frame->setBorder(kFrameWidth, 0, QColor(QLatin1String(kFrame)));
    m_cameraList->setAdapter(m_cameraAdapter);
    m_cameraList->setMultiSelect(true);
    m_cameraList->setAccessibleName(m_cameraHeading->text());
    m_chosenList->setAdapter(m_chosenAdapter);
    m_chosenList->setAccessibleName(orvelle::text("watch_the_camera"));
}

void KvDeviceGroupSelectDialogUI::setUpOkButton() {
    m_okButton->setText(orvelle::text("ok"));
    m_okButton->setStyleSheet(
        QStringLiteral("QPushButton{color:#ffffff;background:#00a7f9;border-radius:15px;"
                       "outline:none;}QPushButton:hover{background:%1;}"
                       "QPushButton:pressed{background:%2;}")
            .arg(QLatin1String(kAccentHover), QLatin1String(kAccentPressed)));
    KvWidgetUtils::setFont(m_okButton, kFontPixels);
    m_okButton->setCursor(Qt::PointingHandCursor);
    m_okButton->setDefault(true);
}

void KvDeviceGroupSelectDialogUI::setTitle(const QString& title) {
    m_title->setText(title);
}

void KvDeviceGroupSelectDialogUI::showCount(int chosen, int most) {
    m_counter->setText(QStringLiteral("%1 : %2/%3")
                           .arg(orvelle::text("watch_the_camera"), QString::number(chosen),
                                QString::number(most)));
    m_chosenHint->setVisible(chosen == 0);
}

void KvDeviceGroupSelectDialogUI::layOutColumn(int left, QLabel* heading, KvWidget* frame,
                                               KvListView* list) const {
    heading->setGeometry(left, kHeadingTop, kColumnWidth, kHeadingHeight);
    const int bottom = height() - kDialogMargin - kOkSize.height() - kOkGap;
    const QRect area(left, kListTop, kColumnWidth, bottom - kListTop);
    frame->setGeometry(area);
    list->setGeometry(area.adjusted(kFrameWidth, kFrameWidth, -kFrameWidth, -kFrameWidth));
}

void KvDeviceGroupSelectDialogUI::resizeEvent(QResizeEvent* /*event*/) {
    const int inner = width() - 2 * kDialogMargin;
    m_title->setGeometry(kDialogMargin, kTitleTop, inner - kCloseSize, kTitleHeight);
    m_closeButton->setGeometry(width() - kCloseMargin - kCloseSize, kCloseMargin, kCloseSize,
                               kCloseSize);
    m_nameEdit->setGeometry(kDialogMargin, kNameTop, inner, kFieldHeight);
    layOutColumn(kDialogMargin, m_cameraHeading, m_cameraFrame, m_cameraList);
    layOutColumn(width() - kDialogMargin - kColumnWidth, m_counter, m_chosenFrame, m_chosenList);
    m_chosenHint->setGeometry(m_chosenList->geometry());
    m_okButton->setGeometry((width() - kOkSize.width()) / 2,
                            height() - kDialogMargin - kOkSize.height(), kOkSize.width(),
                            kOkSize.height());
}
