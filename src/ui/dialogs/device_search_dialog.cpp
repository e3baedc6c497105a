#include "ui/dialogs/device_search_dialog.h"

#include <QLabel>
#include <QPushButton>

#include "device/device_search_thread.h"
#include "device/worker_reaper.h"
#include "ui/dialogs/device_table_model.h"
#include "ui/dialogs/device_table_view.h"
#include "ui/palette.h"
#include "ui/widgets/loading_message_view.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

using namespace orvelle;

namespace {

constexpr int kSearchMs = 2000;
constexpr QSize kMinimumSize(410, 350);
constexpr QSize kSize(460, 420);
constexpr int kTitleHeight = 56;
constexpr int kCloseSize = 24;
constexpr int kCloseMargin = 10;
constexpr int kNoticeHeight = 44;
constexpr int kButtonWidth = 150;
constexpr int kGap = 16;

QString labelStyle(const char* color) {
    return QStringLiteral("QLabel{color:%1;}").arg(QLatin1String(color));
}

}  // namespace

KvTUTKDeviceSearchDialog::KvTUTKDeviceSearchDialog(orvelle::WorkerReaper& reaper, QWidget* parent)
    : KvDialog(parent),
      m_reaper(reaper),
      m_title(new QLabel(text("search_local_network"), this)),
      m_table(new KvTUTKDeviceTableView(this)),
      m_notice(new QLabel(this)),
      m_add(new QPushButton(text("add_device"), this)),
      m_search(new QPushButton(text("search_again"), this)),
      m_close(new QPushButton(this)),
      m_loading(std::make_unique<KvLoadingMessageView>()) {
    setMinimumSize(kMinimumSize);
    resize(kSize);
    setAccessibleName(m_title->text());
    m_title->setAlignment(Qt::AlignCenter);
    m_title->setStyleSheet(labelStyle(palette::kText));
    KvWidgetUtils::setFont(m_title, palette::kTitleFontPixels);
    m_notice->setAlignment(Qt::AlignCenter);
    m_notice->setWordWrap(true);
    m_notice->setStyleSheet(labelStyle(palette::kFaintText));
    KvWidgetUtils::setFont(m_notice, palette::kSmallFontPixels);
    m_loading->setText(text("searching"));
    setUpButtons();
    search();
}

KvTUTKDeviceSearchDialog::~KvTUTKDeviceSearchDialog() {
    m_reaper.take(std::move(m_thread), this);
}

void KvTUTKDeviceSearchDialog::setUpButtons() {
    KvWidgetUtils::setUpImageButton(m_close, QStringLiteral("close"), "close");
    for (QPushButton* button : {m_add, m_search}) {
        KvWidgetUtils::setFont(button, palette::kFontPixels);
        button->setCursor(Qt::PointingHandCursor);
    }
    m_add->setStyleSheet(KvWidgetUtils::primaryButtonStyle());
    m_search->setStyleSheet(KvWidgetUtils::secondaryButtonStyle());
    for (QPushButton* button : {m_add, m_search, m_close})
        button->setAutoDefault(false);
    connect(m_add, &QPushButton::clicked, this, &KvTUTKDeviceSearchDialog::_onClickAddButton);
    connect(m_search, &QPushButton::clicked, this, &KvTUTKDeviceSearchDialog::_onClickSearchButton);
    connect(m_close, &QPushButton::clicked, this, &KvTUTKDeviceSearchDialog::_onClickCloseButton);
    connect(m_table->devices(), &KvDeviceTableModel::onAllCheckedChanged, this,
            &KvTUTKDeviceSearchDialog::updateNotice);
}

void KvTUTKDeviceSearchDialog::search() {
    m_reaper.take(std::move(m_thread), this);
    m_table->devices()->setDevices({});
    m_thread = std::make_unique<TUTKDeviceSearchThread>(kSearchMs);
    connect(m_thread.get(), &QThread::finished, this, &KvTUTKDeviceSearchDialog::_onSearchEnded);
    m_thread->start(QThread::InheritPriority);
    m_search->setEnabled(false);
    m_loading->showOver(this, tableArea());
    updateNotice();
}

void KvTUTKDeviceSearchDialog::_onSearchEnded() {
    m_loading->hideOver();
    m_search->setEnabled(true);
    m_thread->waitForEnd();
    m_table->devices()->setDevices(m_thread->result());
    updateNotice();
}

void KvTUTKDeviceSearchDialog::updateNotice() {
    const KvDeviceTableModel* devices = m_table->devices();
    const bool isSearching = !m_search->isEnabled();
    m_add->setEnabled(devices->checkedCount() > 0);
    QString notice;
    if (devices->rowCount() > 0)
        notice = text("a_camera_found_here_is_added_by_its_device_code");
    else if (!isSearching)
        notice = text("no_cameras_found_on_this_network");
    m_notice->setText(notice);
}

void KvTUTKDeviceSearchDialog::_onClickAddButton(bool) {
    accept();
}

void KvTUTKDeviceSearchDialog::_onClickSearchButton(bool) {
    search();
}

void KvTUTKDeviceSearchDialog::_onClickCloseButton(bool) {
    reject();
}

QRect KvTUTKDeviceSearchDialog::tableArea() const {
    const int bottom = palette::kDialogMargin + palette::kButtonHeight + kNoticeHeight;
    return {palette::kDialogMargin, kTitleHeight, width() - 2 * palette::kDialogMargin,
            height() - kTitleHeight - bottom};
}

void KvTUTKDeviceSearchDialog::resizeEvent(QResizeEvent*) {
    const QRect table = tableArea();
    m_title->setGeometry(table.left(), 0, table.width(), kTitleHeight);
    m_close->setGeometry(width() - kCloseMargin - kCloseSize, kCloseMargin, kCloseSize, kCloseSize);
    m_table->setGeometry(table);
    m_notice->setGeometry(table.left(), table.bottom() + 1, table.width(), kNoticeHeight);
    const int top = height() - palette::kDialogMargin - palette::kButtonHeight;
    const int left = (width() - 2 * kButtonWidth - kGap) / 2;
    m_add->setGeometry(left, top, kButtonWidth, palette::kButtonHeight);
    m_search->setGeometry(left + kButtonWidth + kGap, top, kButtonWidth, palette::kButtonHeight);
}
