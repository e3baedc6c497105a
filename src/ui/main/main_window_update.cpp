#include <QApplication>
#include <QEvent>

#include "core/file_utils.h"
#include "core/log.h"
#include "ui/dialogs/confirm_dialog.h"
#include "ui/dialogs/file_downloader_dialog.h"
#include "ui/dialogs/installer_start_dialog.h"
#include "ui/dialogs/new_version_dialog.h"
#include "ui/main/main_window.h"
#include "ui/main/main_window_ui.h"
#include "ui/preview/devices_preview.h"
#include "ui/preview/recording_question.h"
#include "ui/widgets/text.h"
#include "update/installer.h"
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
    const std::optional<orvelle::Installer> installer = orvelle::installerOf(info);
    if (!installer) {
        inform(text("this_version_cannot_be_downloaded"));
        return;
    }
    const QString target = KvFileUtils::updatePath() + QLatin1Char('/') + installer->fileName;
    QString failure;
    do {
        KvFileDownloaderDialog dialog(this);
        if (dialog.download(*installer, target) != QDialog::Accepted)
            failure = dialog.failure();
        else
            failure = startInstaller(target, *dialog.proof());
    } while (!failure.isEmpty() && wantsToRetry(failure));
}

QString MainWindow::startInstaller(const QString& path, const orvelle::InstallerProof& proof) {
    using Outcome = orvelle::InstallerThread::Outcome;
    // Once the installer runs there is no way back.
    if (!mayEndWhatRuns())
        return {};
    orvelle::InstallerStartDialog dialog(path, proof, this);
    dialog.execCentred();
    switch (dialog.outcome()) {
        case Outcome::kGenuine:
            exitProgram();
            return {};
        case Outcome::kNotStarted:
            return text("the_update_could_not_be_started");
        default:
            return text("the_downloaded_file_is_damaged_and_is_not_started");
    }
}

bool MainWindow::wantsToRetry(const QString& failure) {
    KvConfirmDialog dialog(failure, this);
    dialog.setConfirmText(text("retry"));
    return dialog.execCentred() == QDialog::Accepted;
}
