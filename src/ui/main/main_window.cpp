#include "ui/main/main_window.h"

#include <QHBoxLayout>
#include <QListWidget>

#include "device/device_manager.h"
#include "ui/list/device_state_text.h"
#include "ui/palette.h"
#include "ui/preview/device_player_view.h"

namespace {

constexpr QSize kDefaultSize(1120, 750);
constexpr int kListWidth = 240;
constexpr int kStateIntervalMs = 1000;
constexpr int kUidRole = Qt::UserRole;

QString itemText(const KvDevice& device) {
    return device.displayName() + QLatin1Char('\n') + orvelle::deviceStateText(device);
}

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
    setWindowTitle(QStringLiteral("Orvelle"));
    resize(kDefaultSize);
    buildChildren();
    fillList();
    connect(m_cameraList, &QListWidget::currentRowChanged, this, &MainWindow::_onSelectDevice);
    connect(&m_stateTimer, &QTimer::timeout, this, &MainWindow::_invokeUpdateStates);
    m_stateTimer.start(kStateIntervalMs);
    m_cameraList->setCurrentRow(0);
}

MainWindow::~MainWindow() {
    releaseDevices();
}

void MainWindow::releaseDevices() {
    m_stateTimer.stop();
    m_tile->setDevice(nullptr);
}

void MainWindow::buildChildren() {
    auto* area = new QWidget(this);
    auto* layout = new QHBoxLayout(area);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_cameraList = new QListWidget(area);
    m_cameraList->setFixedWidth(kListWidth);
    m_cameraList->setFocusPolicy(Qt::StrongFocus);
    m_cameraList->setStyleSheet(
        QStringLiteral("QListWidget{background:%1;border:none;outline:none;color:%2;}"
                       "QListWidget::item{padding:12px 16px;}"
                       "QListWidget::item:selected{background:%3;color:#ffffff;}")
            .arg(QLatin1String(orvelle::palette::kSideBar), QLatin1String(orvelle::palette::kText),
                 QLatin1String(orvelle::palette::kAccent)));
    m_tile = new KvDevicePlayerView(area);
    layout->addWidget(m_cameraList);
    layout->addWidget(m_tile, 1);
    setCentralWidget(area);
}

void MainWindow::fillList() {
    const auto* manager = KvDeviceManager::instance();
    if (!manager)
        return;
    for (const KvDevice* device : manager->devicesSnapshot()) {
        auto* item = new QListWidgetItem(itemText(*device), m_cameraList);
        item->setData(kUidRole, device->uid());
    }
}

KvDevice* MainWindow::deviceAt(int row) const {
    const QListWidgetItem* item = m_cameraList->item(row);
    const auto* manager = KvDeviceManager::instance();
    return item && manager ? manager->findDevice(item->data(kUidRole).toString()) : nullptr;
}

void MainWindow::_onSelectDevice(int row) {
    m_tile->setDevice(deviceAt(row));
}

void MainWindow::_invokeUpdateStates() {
    for (int row = 0; row < m_cameraList->count(); ++row) {
        if (const KvDevice* device = deviceAt(row))
            m_cameraList->item(row)->setText(itemText(*device));
    }
}
