#include "app/start_up.h"

#include <QMessageBox>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>
#include <optional>

#include "app/application.h"
#include "app/command_line.h"
#include "app/language_choice.h"
#include "core/configure.h"
#include "core/file_utils.h"
#include "core/language.h"
#include "core/log.h"
#include "core/thread.h"
#include "device/device_manager.h"
#include "media/live/device_inputs.h"
#include "media/media_log.h"
#include "media/recording/unfinished_recordings.h"
#include "platform/crash_dump.h"
#include "platform/keep_awake.h"
#include "platform/quit_signals.h"
#include "platform/session_end_hold.h"
#include "platform/single_instance.h"
#include "platform/suspend_watch.h"
#include "render/drawing.h"
#include "render/sound_thread.h"
#include "ui/main/main_window.h"
#include "ui/main/restart_hook.h"
#include "ui/palette.h"
#include "ui/preview/recording_news.h"
#include "ui/preview/saving_dialog.h"
#include "ui/widgets/focus_ring.h"

namespace orvelle {

namespace {

constexpr int kRestart = -1;
constexpr int kAlreadyRunning = -1;
/// Finishing one recording of an interrupted run takes less.
constexpr int kUnfinishedWaitMs = 2000;
constexpr int kSoundWaitMs = 2000;

void chooseFont() {
    // Not every system has the house font; these have its Chinese characters.
    QFont::insertSubstitutions(
        QLatin1String(palette::kFontFamily),
        {QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Source Han Sans SC"),
         QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("DejaVu Sans")});
    QFont font{QString::fromLatin1(palette::kFontFamily)};
    font.setPixelSize(palette::kFontPixels);
    QApplication::setFont(font);
}

void warnAlreadyRunning() {
    QMessageBox::warning(nullptr, KvLanguage::getString(QStringLiteral("waring")),
                         KvLanguage::getString(QStringLiteral("program_already_running")),
                         QMessageBox::Ok);
}

/// Debug lines go where the environment asks for them, or a developer's build runs.
void chooseDebugLines() {
#ifdef QT_NO_DEBUG
    const bool isDebugBuild = false;
#else
    const bool isDebugBuild = true;
#endif
    const bool isAsked = !qEnvironmentVariableIsEmpty("ORVELLE_LOG");
    setDebugLines(isDebugBuild || isAsked);
    setLogEnabled(isAsked);
}

/// "--log FILE", or "--log" for the usual place: what the program says, for whoever looks for a
/// fault of a program that has no console.
void startLogOnRequest() {
    const QStringList arguments = QCoreApplication::arguments();
    const int option = arguments.indexOf(QStringLiteral("--log"));
    if (option < 0)
        return;
    const QString path = arguments.value(option + 1, KvFileUtils::logFilePath());
    if (!startLog(path))
        qWarning("cannot write the log %s", qUtf8Printable(path));
}

/// What an earlier version, or a copy from elsewhere, left open to others is closed once.
class FileCloser : public KvThread {
public:
    FileCloser() : KvThread(QStringLiteral("file-closer")) {}
    void run() override { KvFileUtils::closeToOthers(); }
};

/// The services that live as long as the process and survive a rebuilt main window.
class Services {
public:
    Services() {
        silenceFfmpeg();
        registerDeviceInputs();
        m_fileCloser.start();
        KvDeviceManager* const manager = KvDeviceManager::create();
        KvConfigure::setWriter(&manager->fileWriter());
        manager->start(KvFileUtils::devicesPath());
        m_unfinished->start(QThread::LowPriority);
    }
    ~Services() {
        m_unfinished->stop();
        // A share that hangs holds up nothing but its own thread.
        if (!m_unfinished->waitForEnd(kUnfinishedWaitMs))
            static_cast<void>(m_unfinished.release());
        KvConfigure::setWriter(nullptr);
        KvDeviceManager::release();
        m_fileCloser.waitForEnd();
    }
    Services(const Services&) = delete;
    Services& operator=(const Services&) = delete;

private:
    // The first to come and the last to go.
    const SessionEndHold m_sessionEndHold{
        KvLanguage::getString(QStringLiteral("exiting_the_application")).toStdString()};
    KvFileUtils m_fileUtils;
    FileCloser m_fileCloser;
    std::unique_ptr<UnfinishedRecordings> m_unfinished =
        std::make_unique<UnfinishedRecordings>(KvFileUtils::mediaRoot());
};

/// A sound server that hangs keeps the thread that asked it; what is destroyed from here on would
/// wait for that or abort.
void leaveHungSoundBehind(int exitCode) {
    if (SoundThread::instance().hasEnded(kSoundWaitMs))
        return;
    qWarning("the sound server does not answer; its thread is left behind");
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

/// One main window from its start to its end; the event loop's exit code.
int runMainWindow(KvApplication& application) {
    const KeepAwake keepAwake;
    MainWindow window;
    application.setMainWindow(&window);
    window.show();
    const int code = QApplication::exec();
    application.setMainWindow(nullptr);
    return code;
}

}  // namespace

int runOrvelle(int argc, char** argv) {
    std::optional<HeldQuitSignals> heldQuitSignals(std::in_place);
    chooseDebugLines();
    // Sizes are in logical pixels, whatever the screen's density; images come at twice the size.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    spareOpenGl();
    std::optional<DisplayNeeded> displayNeeded(std::in_place);
    KvApplication application(argc, argv);
    displayNeeded.reset();
    application.installNativeEventFilter(&application);
    startLogOnRequest();
    const QString dump = KvFileUtils::dataRoot() + QStringLiteral("/Orvelle.dmp");
    writeCrashDumpTo(dump.toStdString());
    setRestartHook(&KvApplication::restart);
    FocusRing::install();
    const QuitSignals quitSignals([] { QCoreApplication::quit(); });
    heldQuitSignals.reset();
    const SuspendWatch suspendWatch([] { KvApplication::restart(); });

    QTranslator toolkitTexts;
    loadChosenLanguage(toolkitTexts);
    chooseFont();
    // The lock comes before the services and goes after them: a second copy must touch neither the
    // cameras nor their files. It is held while the window is built anew, and is that of the data.
    SingleInstance singleInstance("Orvelle", KvFileUtils::dataRoot().toStdString());
    if (!singleInstance.acquire()) {
        warnAlreadyRunning();
        return kAlreadyRunning;
    }
    std::optional<Services> services(std::in_place);
    int code = runMainWindow(application);
    // A suspend that meets the way out does not bring the window back.
    while (code == kRestart && !KvDeviceManager::instance()->isClosedForGood()) {
        loadChosenLanguage(toolkitTexts);
        chooseFont();
        code = runMainWindow(application);
    }
    RecordingNews::shutDown(SavingDialog::kMaxWaitMs);
    services.reset();
    leaveHungSoundBehind(code);
    return code;
}

}  // namespace orvelle
