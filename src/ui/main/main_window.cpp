#include "ui/main/main_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QtDebug>

#include "device/device_manager.h"
#include "ui/dialogs/app_cancel_dialog.h"
#include "ui/dialogs/confirm_dialog.h"
#include "ui/dialogs/media_path_dialog.h"
#include "ui/list/cameras_view.h"
#include "ui/list/device_group_pop_menu.h"
#include "ui/list/device_search_view.h"
#include "ui/main/main_window_ui.h"
#include "ui/main/menu_view.h"
#include "ui/main/title_view.h"
#include "ui/main/window_edges.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/recording_news.h"
#include "ui/preview/recording_question.h"
#include "ui/preview/saving_dialog.h"
#include "ui/widgets/click_label.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/text.h"
#include "ui/widgets/widget_utils.h"

namespace {

constexpr QSize kDefaultSize(1120, 750);
constexpr int kLargeScreenHeight = 790;
constexpr int kTaskBarHeight = 40;

}  // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent), m_toast(this), m_groupMenu(new KvDeviceGroupPopMenu(this)) {
    // Before there are children: both take the colour of placeholders away from their fields.
    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint);
    setStyleSheet(QStringLiteral("QMainWindow{background-color:#00000000;border-radius:5px;}"));
    m_ui = new MainWindowUI(this);
    setWindowTitle(QStringLiteral("Orvelle"));
    setCentralWidget(m_ui);
    setMinimumSize(defaultSize(screen()->geometry().size()));
    setDefaultGeometry();
    new orvelle::WindowEdges(this);
    connectTitleBar();
    connectCameras();
    connectContent();
    connectRecordings();
    connectManager();
    refresh();
    m_ui->focusStart();
    lookForUpdate();
}

MainWindow::~MainWindow() {
    releaseDevices();
}

void MainWindow::releaseDevices() {
    m_ui->preview()->setGroup(nullptr);
}

void MainWindow::connectTitleBar() {
    connect(m_ui->logo(), &KvClickLabel::click, this, &MainWindow::_onClickLogo);
    connect(m_ui->title(), &KvClickLabel::click, this, &MainWindow::_onClickLogo);
    connect(m_ui->titleView(), &KvTitleView::mouseRelease, this,
            &MainWindow::_onTitleViewMouseRelease);
    connect(m_ui->titleView(), &KvTitleView::doubleClick, m_ui->maximiseButton(),
            &QPushButton::click);
    connect(m_ui->helpButton(), &QPushButton::clicked, this, &MainWindow::_onClickHelpButton);
    connect(m_ui->closeButton(), &QPushButton::clicked, this, &MainWindow::_onClickCloseButton);
    connect(m_ui->minimiseButton(), &QPushButton::clicked, this,
            &MainWindow::_onClickMinilizedButton);
    connect(m_ui->maximiseButton(), &QPushButton::clicked, this,
            &MainWindow::_onClickMaxinilizedButton);
    connect(m_ui->helpMenu(), &KvMenuView::clickHelp, this, &MainWindow::_onClickHelpMenu);
    connect(m_ui->helpMenu(), &KvMenuView::clickLanguage, this, &MainWindow::_onClickLanguage);
    connect(m_ui->helpMenu(), &KvMenuView::clickLog, this, &MainWindow::_onClickLog);
}

void MainWindow::connectCameras() {
    connect(m_ui->allCamerasButton(), &QPushButton::clicked, this, &MainWindow::_onClickAllCamera);
    connect(m_ui->mediaPathButton(), &QPushButton::clicked, this, &MainWindow::_onCilckSdcard);
    const KvCamerasView* cameras = m_ui->cameras();
    // Queued: what they start may rebuild the list under the item that was clicked.
    connect(cameras, &KvCamerasView::clickDevice, this, &MainWindow::_onClickDevice,
            Qt::QueuedConnection);
    connect(cameras, &KvCamerasView::rightClickDevice, this, &MainWindow::_onRightClickDevice,
            Qt::QueuedConnection);
    connect(cameras, &KvCamerasView::doubleClickDevice, this, &MainWindow::_onDoubleClickDevice,
            Qt::QueuedConnection);
    connect(cameras, &KvCamerasView::clickDeviceEdit, this, &MainWindow::_onClickDeviceItemEdit,
            Qt::QueuedConnection);
    connect(cameras, &KvCamerasView::clickAddDevice, this, &MainWindow::_onClickCamerasAddButton);
    connect(cameras, &KvCamerasView::clickAddGroup, this, &MainWindow::_onClickAddGroup);
    connect(cameras, &KvCamerasView::clickSearchDevices, this, &MainWindow::searchNetwork);
    connect(m_groupMenu, &KvDeviceGroupPopMenu::clickDeviceGroup, this,
            &MainWindow::_onClickDeviceGroupMenu);
}

void MainWindow::connectContent() {
    connect(m_ui->welcomePage(), &KvDeviceSearchView::clickSearchButton, this,
            &MainWindow::_onClickSearch);
    connect(m_ui->welcomePage(), &KvDeviceSearchView::addDevice, this, &MainWindow::_onAddDevice);
    using Preview = KvDevicesPreview;
    connect(m_ui->preview(), &Preview::deviceGroupThumbUpdate, this,
            &MainWindow::_onDeviceGroupThumbUpdate);
    connect(m_ui->preview(), &Preview::requestFullscreen, this, &MainWindow::_onRequestFullscreen);
    connect(m_ui->preview(), &Preview::unbindDevice, this, &MainWindow::_onUnbindDevice);
    connect(m_ui->preview(), &Preview::enterCode, this, &MainWindow::_onEnterCode);
    connect(m_ui->preview(), &Preview::deviceGroupInfoChanged, this,
            &MainWindow::_onPreviewDeviceGroupInfoChanged);
}

QSize MainWindow::defaultSize(const QSize& screen) {
    QSize size = kDefaultSize;
    if (screen.height() < kLargeScreenHeight) {
        size.setHeight(screen.height() - kTaskBarHeight);
        size.setWidth(size.height() * kDefaultSize.width() / kDefaultSize.height());
    }
    // 4:3, and screens that stand upright.
    return size.boundedTo({screen.width(), size.height()});
}

void MainWindow::setDefaultGeometry() {
    const QRect area = screen()->geometry();
    const QSize size = defaultSize(area.size());
    setGeometry(area.left() + (area.width() - size.width()) / 2,
                area.top() + (area.height() - kTaskBarHeight - size.height()) / 2, size.width(),
                size.height());
}

void MainWindow::rememberPlace() {
    if (isFullScreen())
        return;
    m_wasMaximised = isMaximized();
    if (!m_wasMaximised)
        m_placeBefore = geometry();
}

void MainWindow::restorePlace(bool wasMaximised) {
    if (wasMaximised) {
        showMaximized();
        return;
    }
    showNormal();
    if (m_placeBefore.isEmpty())
        setDefaultGeometry();
    else
        setGeometry(m_placeBefore);
}

bool MainWindow::event(QEvent* event) {
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::WindowStateChange) {
        const auto before = static_cast<QWindowStateChangeEvent*>(event)->oldState();
        if ((before & Qt::WindowFullScreen) && !isFullScreen())
            m_ui->preview()->exitsFullscreen();
        m_ui->preview()->setMinimised(isMinimized());
        m_ui->showMaximised(isMaximized());
        m_ui->layOut();
    }
    return handled;
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    const bool isTaken = KvWidgetUtils::clickByEnter(*this, *event) ||
                         (m_ui->isPreviewShown() && m_ui->preview()->pressKey(*event));
    if (!isTaken)
        QMainWindow::keyPressEvent(event);
}

void MainWindow::_onRequestFullscreen(bool fullscreen) {
    qDebug("_onRequestFullscreen0");
    if (fullscreen) {
        qDebug("_onRequestFullscreen00");
        rememberPlace();
        showFullScreen();
    } else {
        qDebug("_onRequestFullscreen10");
        // A tile is closed in an ordinary window, too; that one keeps its place.
        if (isFullScreen())
            restorePlace(m_wasMaximised);
    }
    // Closing any tile closes the grid, which then leaves the place to the welcome page.
    m_ui->showPreview(m_ui->preview()->group() != nullptr);
    qDebug("_onRequestFullscreen1");
}

void MainWindow::_onClickMinilizedButton(bool) {
    showMinimized();
}

void MainWindow::_onClickMaxinilizedButton(bool) {
    if (isMaximized()) {
        restorePlace(false);
        return;
    }
    rememberPlace();
    showMaximized();
}

void MainWindow::_onClickAllCamera(bool) {
    m_ui->showCameras(!m_ui->areCamerasShown());
}

void MainWindow::_onCilckSdcard(bool) {
    KvMediaPathDialog(this).execCentred(m_ui->contentLeft());
}

void MainWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    closeProgram();
}

void MainWindow::_onClickCloseButton(bool) {
    closeProgram();
}

void MainWindow::closeProgram() {
    if (m_isClosing)
        return;
    m_isClosing = true;
    m_ui->hideHelpMenu();
    QString text = orvelle::text("are_you_sure_you_want_to_close_the_orvelle_pc_application");
    const KvDevicesPreview& preview = *m_ui->preview();
    const QString ending =
        orvelle::endingText(preview.runningRecordings(), preview.isDownloading());
    if (!ending.isEmpty())
        text += QLatin1Char('\n') + ending;
    KvConfirmDialog question(text, this);
    if (question.execCentred(m_ui->contentLeft()) != QDialog::Accepted) {
        m_isClosing = false;
        orvelle::RecordingNews::instance().announce();
        // One that came meanwhile.
        QMetaObject::invokeMethod(this, &MainWindow::offerUpdate, Qt::QueuedConnection);
        return;
    }
    exitProgram();
}

void MainWindow::exitProgram() {
    m_isClosing = true;
    releaseDevices();
    m_ui->cameras()->freezeStates();
    KvAppCancelDialog(this).start(m_ui->contentLeft());
    orvelle::SavingDialog(this).run(m_ui->contentLeft());
    tellLastRecordings();
    QCoreApplication::quit();
}
