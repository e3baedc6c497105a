#include "app/application.h"

#include "platform/heap.h"
#include "platform/native_message.h"
#include "ui/main/main_window.h"

static KvApplication* s_instance = nullptr;

namespace {

constexpr int kHeapIntervalMs = 60'000;

}  // namespace

KvApplication::KvApplication(int& argc, char** argv) : QApplication(argc, argv) {
    s_instance = this;
    setApplicationName(QStringLiteral("Orvelle"));
    setApplicationVersion(QStringLiteral(ORVELLE_VERSION));
    // The fallback would close the windows behind our back; the session's end is a plain quit.
    setFallbackSessionManagementEnabled(false);
    connect(this, &QGuiApplication::commitDataRequest, this, &QCoreApplication::quit,
            Qt::QueuedConnection);
    // A window of cameras stays open for days, and streams come and go in it.
    connect(&m_heapTimer, &QTimer::timeout, this, [] { orvelle::giveBackHeap(); });
    m_heapTimer.start(kHeapIntervalMs);
}

KvApplication::~KvApplication() {
    s_instance = nullptr;
}

KvApplication* KvApplication::instance() {
    return s_instance;
}

void KvApplication::setMainWindow(MainWindow* window) {
    m_mainWindow = window;
}

void KvApplication::restart() {
    QCoreApplication::exit(-1);
}

bool KvApplication::nativeEventFilter(const QByteArray& eventType, void* message, long*) {
    switch (orvelle::nativeMessage(eventType.constData(), message)) {
        case orvelle::NativeMessage::SessionEnd:
            quit();
            break;
        case orvelle::NativeMessage::AboutToSuspend:
            restart();
            break;
        case orvelle::NativeMessage::Other:
            break;
    }
    return false;
}
