#include <QCoreApplication>
#include <QDir>
#include <QNetworkInterface>
#include <QTimer>

#include <cstdio>

#include "camera/camera.h"
#include "camera/camera_options.h"
#include "camera/camera_password.h"
#include "camera/card/memory_card.h"
#include "camera/demo/card_maker.h"
#include "camera/demo/clip_writer.h"
#include "camera/demo/demo_feed.h"
#include "camera/sources/source_feed.h"
#include "core/wipe.h"
#include "link/device_code.h"
#include "link/environment.h"
#include "link/result_codes.h"
#include "platform/quit_signals.h"
#include "platform/secret_memory.h"
#include "platform/single_instance.h"
#include "platform/terminal.h"
#include "platform/write_fault.h"

extern "C" {
#include <libavutil/log.h>
}

namespace orvelle {

namespace {

enum ExitCode { kStopped = 0, kWrongOptions = 2, kBadSource = 3, kNoPort = 4 };

constexpr int kEndCheckMs = 200;

int fail(ExitCode code, const QString& error) {
    std::fprintf(stderr, "orvelle-camera: %s\n", qUtf8Printable(error));
    return code;
}

DemoFeedConfig demoConfig(const CameraOptions& options) {
    DemoFeedConfig config;
    config.format = options.format;
    config.videoCodec = options.videoCodec;
    config.audioCodec = options.audioCodec;
    config.scene = options.scene;
    config.label = options.uid;
    config.timezoneMinutes = options.timezoneMinutes;
    return config;
}

std::unique_ptr<Feed> makeFeed(const CameraOptions& options, const PanTilt* panTilt) {
    if (options.source.isEmpty())
        return std::make_unique<DemoFeed>(demoConfig(options), panTilt);
    SourceFeedConfig config;
    config.source.url = options.source;
    config.source.isRepeated = options.isRepeated;
    config.source.webcamWidth = options.format.width;
    config.source.webcamHeight = options.format.height;
    config.source.webcamFps = options.format.framesPerSecond;
    config.video.codec = options.videoCodec;
    if (options.hasSize)
        config.video.maxHeight = options.format.height;
    config.video.bitsPerSecond = options.hasBitRate ? options.format.bitsPerSecond : 0;
    config.audioCodec = options.audioCodec;
    return std::make_unique<SourceFeed>(std::move(config));
}

// What the camera reports as its own: the first interface that is up and fit for others, else
// loopback.
void readNetwork(const QString& bindAddress, CameraProfile& profile) {
    profile.ipAddress = QStringLiteral("127.0.0.1");
    profile.macAddress = QStringLiteral("00:00:00:00:00:00");
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& interface : interfaces) {
        if (!interface.flags().testFlag(QNetworkInterface::IsRunning) ||
            interface.flags().testFlag(QNetworkInterface::IsLoopBack))
            continue;
        const QList<QNetworkAddressEntry> entries = interface.addressEntries();
        for (const QNetworkAddressEntry& entry : entries) {
            const QString address = entry.ip().toString();
            if (entry.ip().protocol() != QAbstractSocket::IPv4Protocol ||
                (bindAddress != QLatin1String("0.0.0.0") && bindAddress != address))
                continue;
            profile.ipAddress = address;
            profile.macAddress = interface.hardwareAddress();
            return;
        }
    }
}

/// Empty for a camera that is the only one.
QString suffixOf(const CameraOptions& options, int number) {
    return options.cameras > 1 ? QStringLiteral("%1").arg(number + 1, 2, 10, QLatin1Char('0'))
                               : QString();
}

CameraProfile makeProfile(const CameraOptions& options, const Feed& feed, int number) {
    CameraProfile profile;
    const QString suffix = suffixOf(options, number);
    profile.uid = options.uid + suffix;
    profile.name =
        suffix.isEmpty() ? options.name : QString(options.name % QLatin1Char(' ') % suffix);
    profile.deviceType = options.deviceType;
    profile.timezoneMinutes = options.timezoneMinutes;
    profile.pictureHeight = feed.format().height;
    profile.networkName = options.networkName;
    readNetwork(options.bindAddress, profile);
    return profile;
}

std::unique_ptr<Camera> makeCamera(const CameraOptions& options, const std::string& password,
                                   Feed* feed, PanTilt* panTilt, MemoryCard* card, int number) {
    CameraAddress address;
    address.password = password;
    address.bindAddress = options.bindAddress.toStdString();
    address.port = options.port > 0 ? static_cast<uint16_t>(options.port + number) : uint16_t{0};
    return std::make_unique<Camera>(makeProfile(options, *feed, number), std::move(address), feed,
                                    options.deviceType == 1 ? panTilt : nullptr, card);
}

void printCode(const QString& uid, const std::string& password) {
    std::string code = encodeDeviceCode(uid.toStdString(), password);
    const WipedAtEnd<std::string> wiped(code);
    std::printf("Device code: %s\n", code.c_str());
}

/// The code is for a person's eyes: what is no terminal may be a journal or a log file.
void announce(const Camera& camera, const std::string& password) {
    std::printf("UID: %s\n", qUtf8Printable(camera.profile().uid));
    if (isTerminal(stdout))
        printCode(camera.profile().uid, password);
    std::printf("Port: %d\n", camera.port());
}

void announceHowToSeeCodes() {
    if (!isTerminal(stdout))
        std::puts("The device code is not shown here: add --show-code to see it.");
}

int showCodes(const CameraOptions& options, const std::string& password) {
    for (int number = 0; number < options.cameras; ++number) {
        const QString uid = options.uid + suffixOf(options, number);
        std::printf("UID: %s\n", qUtf8Printable(uid));
        printCode(uid, password);
    }
    return kStopped;
}

std::unique_ptr<MemoryCard> makeMemoryCard(const CameraOptions& options, Feed* feed) {
    if (options.cardDirectory.isEmpty())
        return nullptr;
    QDir().mkpath(options.cardDirectory);
    return std::make_unique<MemoryCard>(options.cardDirectory, options.cardBytes, feed);
}

// Two cameras of one UID answer the same searches, and clients get one or the other.
bool claimUid(const QString& uid, std::vector<std::unique_ptr<SingleInstance>>& claims) {
    claims.push_back(std::make_unique<SingleInstance>(
        "OrvelleCamera" + std::to_string(discoveryPort()) + 'U' + uid.toStdString()));
    return claims.back()->acquire();
}

/// Until the program is told to stop or, where it is not repeated, the source ends.
void runUntilEnd(QCoreApplication& application, const Feed& feed, bool isRepeated) {
    QTimer endCheck;
    QObject::connect(&endCheck, &QTimer::timeout, &application, [&] {
        if (feed.isEnded())
            application.quit();
    });
    if (!isRepeated)
        endCheck.start(kEndCheckMs);
    application.exec();
}

/// kStopped once all are reachable and announced, kNoPort at the first that cannot be.
ExitCode startCameras(const std::vector<std::unique_ptr<Camera>>& cameras,
                      const CameraOptions& options, const std::string& password) {
    for (const auto& camera : cameras) {
        const int result = camera->start();
        if (result < 0) {
            fail(kNoPort, QStringLiteral("camera %1 cannot start: %2 (--bind %3)")
                              .arg(camera->profile().uid, QLatin1String(linkResultText(result)),
                                   options.bindAddress));
            return kNoPort;
        }
        announce(*camera, password);
    }
    announceHowToSeeCodes();
    return kStopped;
}

int runCameras(QCoreApplication& application, const CameraOptions& options,
               const std::string& password, std::unique_ptr<HeldQuitSignals>& held) {
    const QuitSignals quitSignals([&application] { application.quit(); });
    held.reset();
    PanTilt panTilt;
    const std::unique_ptr<Feed> feed = makeFeed(options, &panTilt);
    const QString error = feed->open();
    if (!error.isEmpty())
        return fail(kBadSource, error);
    const std::unique_ptr<MemoryCard> card = makeMemoryCard(options, feed.get());
    std::vector<std::unique_ptr<SingleInstance>> claims;
    std::vector<std::unique_ptr<Camera>> cameras;
    for (int number = 0; number < options.cameras; ++number) {
        cameras.push_back(makeCamera(options, password, feed.get(), &panTilt, card.get(), number));
        const QString& uid = cameras.back()->profile().uid;
        if (!claimUid(uid, claims))
            return fail(kNoPort, QStringLiteral("camera %1 runs on this machine already").arg(uid));
    }
    feed->start();
    if (card)
        card->start();
    const ExitCode code = startCameras(cameras, options, password);
    if (code == kStopped)
        runUntilEnd(application, *feed, options.isRepeated);
    for (const auto& camera : cameras)
        camera->stop();
    if (card)
        card->stop();
    feed->stop();
    return code;
}

QString makeFile(const CameraOptions& options) {
    DemoFeedConfig config = demoConfig(options);
    if (options.madeCard.isEmpty())
        return writeClip(options.clipFile, options.clipSeconds, config);
    if (!options.hasSize) {
        config.format.width = 640;
        config.format.height = 360;
    }
    if (!options.hasBitRate)
        config.format.bitsPerSecond = usualBitRate(config.format);
    return makeCard(options.madeCard, options.madeCardDays, config);
}

int runWithPassword(QCoreApplication& application, const CameraOptions& options,
                    std::unique_ptr<HeldQuitSignals>& held) {
    // Whoever is to write into a pipe may never do so, and the user must be able to end it.
    held.reset();
    FoundPassword password = findPassword(
        {options.passwordFile, options.stateDirectory, options.uid, !options.isCodeAsked});
    held = std::make_unique<HeldQuitSignals>();
    const WipedAtEnd<std::string> wiped(password.text);
    if (!password.error.isEmpty())
        return fail(kWrongOptions, password.error);
    if (options.isCodeAsked)
        return showCodes(options, password.text);
    if (!password.madeFile.isEmpty())
        std::printf("Password: made, and kept in %s\n", qUtf8Printable(password.madeFile));
    return runCameras(application, options, password.text, held);
}

int run(QCoreApplication& application, std::unique_ptr<HeldQuitSignals> held) {
    const ParsedOptions parsed = parseOptions(QCoreApplication::arguments());
    if (!parsed.text.isEmpty()) {
        std::fputs(qUtf8Printable(parsed.text), stdout);
        return kStopped;
    }
    if (!parsed.error.isEmpty())
        return fail(kWrongOptions, parsed.error);
    if (parsed.options.clipFile.isEmpty() && parsed.options.madeCard.isEmpty())
        return runWithPassword(application, parsed.options, held);
    held.reset();
    const QString error = makeFile(parsed.options);
    return error.isEmpty() ? kStopped : fail(kBadSource, error);
}

}  // namespace

}  // namespace orvelle

int main(int argc, char** argv) {
    orvelle::keepMemorySecret();
    orvelle::letTooLargeWritesFail();
    auto held = std::make_unique<orvelle::HeldQuitSignals>();
    // Lines must reach a pipe at once: whoever starts a camera waits for them.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    av_log_set_level(AV_LOG_QUIET);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvelle-camera"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVELLE_VERSION));
    return orvelle::run(application, std::move(held));
}
