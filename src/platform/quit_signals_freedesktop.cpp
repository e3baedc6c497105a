#include "platform/quit_signals.h"

#include "platform/freedesktop.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <utility>

namespace orvelle {
namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> s_writeEnd{-1};

// Runs in signal context, on any thread.
void forward(int) {
    const int savedErrno = errno;
    const char byte = 0;
    // A full pipe already says enough.
    [[maybe_unused]] const ssize_t written = write(s_writeEnd.load(), &byte, 1);
    errno = savedErrno;
}

void setHeld(bool isHeld) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : kSignals)
        sigaddset(&set, number);
    pthread_sigmask(isHeld ? SIG_BLOCK : SIG_UNBLOCK, &set, nullptr);
}

}  // namespace

HeldQuitSignals::HeldQuitSignals() {
    setHeld(true);
}

HeldQuitSignals::~HeldQuitSignals() {
    setHeld(false);
}

struct QuitSignals::Pipe {
    explicit Pipe(std::function<void()> callback);
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void drain();

    const std::function<void()> quit;
    int ends[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
    std::array<struct sigaction, kSignals.size()> former = {};
};

QuitSignals::Pipe::Pipe(std::function<void()> callback) : quit(std::move(callback)) {
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        qCWarning(lcPlatform, "no pipe: signals end the program without order");
        return;
    }
    notifier = std::make_unique<QSocketNotifier>(ends[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [this] { drain(); });
    s_writeEnd.store(ends[1]);

    struct sigaction action = {};
    action.sa_handler = forward;
    action.sa_flags = SA_RESTART;
    sigfillset(&action.sa_mask);
    for (size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], &action, &former[i]);
        if (kSignals[i] == SIGHUP && former[i].sa_handler == SIG_IGN)
            sigaction(SIGHUP, &former[i], nullptr);
    }
}

QuitSignals::Pipe::~Pipe() {
    if (!notifier)
        return;
    for (size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &former[i], nullptr);
    s_writeEnd.store(-1);
    notifier.reset();
    close(ends[0]);
    close(ends[1]);
}

void QuitSignals::Pipe::drain() {
    std::array<char, 64> bytes;
    while (read(ends[0], bytes.data(), bytes.size()) > 0) {
    }
    quit();
}

QuitSignals::QuitSignals(std::function<void()> quit)
    : m_pipe(std::make_unique<Pipe>(std::move(quit))) {}

QuitSignals::~QuitSignals() = default;

}  // namespace orvelle
