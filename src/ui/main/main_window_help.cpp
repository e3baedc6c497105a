#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>
#include <QtDebug>

#include "core/configure.h"
#include "core/file_utils.h"
#include "core/language.h"
#include "core/log.h"
#include "core/shipped_files.h"
#include "ui/dialogs/directory_dialog.h"
#include "ui/dialogs/manual_dialog.h"
#include "ui/dialogs/version_dialog.h"
#include "ui/main/main_window.h"
#include "ui/main/main_window_ui.h"
#include "ui/main/menu_view.h"
#include "ui/main/restart_hook.h"
#include "ui/widgets/text.h"
#include "update/update_server.h"

namespace {

constexpr int kManualMargin = 20;
constexpr int kLogToastMs = 4000;

}  // namespace

void MainWindow::_onTitleViewMouseRelease() {
    m_ui->hideHelpMenu();
}

void MainWindow::_onClickHelpButton(bool) {
    m_ui->helpMenu()->setCurrentLanguage(KvLanguage::getLanguage());
    m_ui->helpMenu()->setLogging(orvelle::isLogEnabled());
    m_ui->toggleHelpMenu();
}

void MainWindow::_onClickLogo(bool) {
    qDebug("version %s", qUtf8Printable(QCoreApplication::applicationVersion()));
    KvVersionDialog(this).execCentred(m_ui->contentLeft());
}

void MainWindow::_onClickHelpMenu() {
    m_ui->hideHelpMenu();
    if (!orvelle::updateServer().isEmpty()) {
        const QString page = KvLanguage::getLanguage() == QLatin1String("chinese")
                                 ? QStringLiteral("/pc_win_chinese.png")
                                 : QStringLiteral("/pc_win_english.png");
        QDesktopServices::openUrl(QUrl(orvelle::updateServer() + page));
        return;
    }
    const QSize room = size() - QSize(2 * kManualMargin, 2 * kManualMargin);
    orvelle::ManualDialog manual(orvelle::manualFolder(), room, this);
    if (manual.isReadable())
        manual.execCentred();
    else
        inform(orvelle::text("the_user_manual_is_not_installed"));
}

void MainWindow::_onClickLanguage(const QString& language) {
    m_ui->hideHelpMenu();
    if (!mayEndWhatRuns())
        return;
    // What cannot be written, and other news, the window that is built anew tells.
    m_isClosing = true;
    KvConfigure().setString(orvelle::settings::kLanguage, language);
    orvelle::requestRestart();
}

void MainWindow::_onClickLog() {
    m_ui->hideHelpMenu();
    const QString path = KvFileUtils::logFilePath();
    if (orvelle::isLogEnabled()) {
        orvelle::stopLog();
        KvDirectoryDialog(orvelle::text("the_log_is_saved_to"), path, this).execCentred();
    } else if (orvelle::startLog(path)) {
        m_toast.show(this, orvelle::text("the_log_is_being_written"), KvToast::kBottomCentre,
                     kLogToastMs);
    } else {
        inform(orvelle::text("the_log_cannot_be_written"));
    }
}
