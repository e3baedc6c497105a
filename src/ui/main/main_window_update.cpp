#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QUrl>

#include "core/file_utils.h"
#include "core/log.h"
#include "platform/run_file.h"
#include "ui/dialogs/file_downloader_dialog.h"
#include "ui/dialogs/new_version_dialog.h"
#include "ui/main/main_window.h"
#include "ui/main/main_window_ui.h"
#include "ui/palette.h"
#include "ui/widgets/text.h"
#include "update/installer_file.h"
#include "update/update_server.h"
#include "update/version_number.h"

using orvelle::text;

void MainWindow::lookForUpdate() {
    if (orvelle::updateServer().isEmpty())
        return;
    orvelle::log("start update url\n", orvelle::kLogInfo);
    connect(&m_updater, &KvUpdater::readUpdateInfo, this, &MainWindow::_onReadUpdateInfo);
    m_updater.start(orvelle::updateServer() + QStringLiteral("/WINversion.xml"));
    m_updater.check(0);
}

void MainWindow::_onReadUpdateInfo(KvUpdateInfo* info) {
    if (!orvelle::isNewerVersion(info->value(QStringLiteral("version")),
                                 QCoreApplication::applicationVersion()))
        return;
    m_update = info;
    // Not from within the network's signal, as the dialogs run event loops.
    QMetaObject::invokeMethod(this, &MainWindow::offerUpdate, Qt::QueuedConnection);
}

void MainWindow::offerUpdate() {
    if (!m_update || m_isClosing)
        return;
    QWidget* front = QApplication::activeModalWidget();
    if (!front)
        front = QApplication::activePopupWidget();
    if (front) {
        front->installEventFilter(this);
        return;
    }
    const KvUpdateInfo& info = *std::exchange(m_update, nullptr);
    KvNewVersionDialog offer(this);
    offer.setVersion(QStringLiteral("%1:V%2").arg(text("version_number"),
                                                  info.value(QStringLiteral("version"))));
    offer.setNotes(info.notes());
    if (offer.execCentred() == QDialog::Accepted)
        downloadUpdate(info);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Hide) {
        watched->removeEventFilter(this);
        QMetaObject::invokeMethod(this, &MainWindow::offerUpdate, Qt::QueuedConnection);
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::downloadUpdate(const KvUpdateInfo& info) {
    const QString name = orvelle::installerFileName(info);
    if (name.isEmpty() || !info.address().isValid() || !info.hasUsableSha256()) {
        inform(text("this_version_cannot_be_downloaded"));
        return;
    }
    const QString target = KvFileUtils::updatePath() + QLatin1Char('/') + name;
    KvFileDownloaderDialog dialog(this);
    if (dialog.download(info.address(), target, info.sha256()) == QDialog::Accepted)
        startInstaller(target);
    else if (dialog.outcome() == orvelle::FileDownloader::Outcome::kFailed)
        m_toast.show(this, text("download_failed"), KvToast::kBottomCentre,
                     orvelle::palette::kToastMs);
}

void MainWindow::startInstaller(const QString& path) {
    if (orvelle::runFile(path.toStdString())) {
        exitProgram();
        return;
    }
    QFile::remove(path);  // it would be taken for a finished download at the next offer
    inform(text("the_update_could_not_be_started"));
}
