#include "camera/camera_options.h"

#include <QCommandLineParser>

#include <algorithm>

#include "camera/sources/media_source.h"
#include "link/limits.h"

namespace orvelle {

namespace {

constexpr int kMaxCameras = 99;  ///< two digits behind the UID
constexpr int kMaxFps = 60;
constexpr int kMaxClipSeconds = 3600;
constexpr int kMaxCardDays = 60;
constexpr int64_t kMinBitRate = 64'000;
constexpr int64_t kMaxBitRate = 20'000'000;
constexpr int kMaxTimezoneMinutes = 14 * 60;

struct Option {
    const char* name;
    const char* value;  ///< null: a switch
    const char* text;
};

constexpr Option kOptions[] = {
    {"uid", "UID", "identity: up to 20 letters and digits (default ORVELLEDEMO1)"},
    {"name", "NAME", "name shown by searches (default: the UID)"},
    {"demo", nullptr, "show the demo scene (default)"},
    {"scene", "N", "which demo scene (default 0)"},
    {"source", "SOURCE",
     "a file, a webcam (/dev/videoN, on Windows video=NAME) or an rtsp:// address instead of the "
     "demo; with a password in it, put it "
     "into ORVELLE_CAMERA_SOURCE instead"},
    {"loop", nullptr, "start a file again at its end (default)"},
    {"once", nullptr, "exit at the end of a file"},
    {"port", "PORT", "UDP port (default: any)"},
    {"bind", "ADDRESS", "address to listen on (default 0.0.0.0)"},
    {"codec", "CODEC", "h264 or hevc, where video is encoded (default h264)"},
    {"size", "SIZE",
     "1080p, 720p or 360p: of the demo (default 720p), at most for a source that is encoded "
     "(default "
     "1080p)"},
    {"fps", "N", "pictures a second of the demo and of webcams (default 15)"},
    {"bitrate", "BITS", "bits per second where video is encoded (default by size)"},
    {"sound", "CODEC", "aac, alaw or none (default aac)"},
    {"type", "N", "0 fixed, 1 pan-tilt (demo scene only; default 0)"},
    {"password-file", "FILE",
     "first line is the password; nobody else may read the file (default: ORVELLE_CAMERA_PASSWORD, "
     "else one that the camera makes at its first start and keeps)"},
    {"state", "DIR",
     "where the password is kept that the camera made (default: orvelle-camera in the user's state "
     "directory)"},
    {"show-code", nullptr,
     "print the device code, with which anybody can watch the camera, and exit; needs the same "
     "--uid, --cameras and password or --state"},
    {"timezone", "MINUTES", "the camera's clock east of UTC (default: this machine's)"},
    {"network-name", "NAME", "name of the Wi-Fi to report (default: none)"},
    {"cameras", "N",
     "several cameras with one picture: UIDs with 01, 02, ... appended, ports "
     "counted up"},
    {"make-clip", "FILE", "write the demo scene to a file as fast as possible, and exit"},
    {"seconds", "N", "length of the clip (default 10)"},
    {"sd", "DIR",
     "a directory as memory card: the stream is recorded there all the time, in files of one "
     "minute"},
    {"sd-size", "MB", "what recordings may take; the oldest make room (default 2048)"},
    {"make-card", "DIR",
     "fill a memory card with recordings of the demo scene over several days as fast as possible, "
     "and exit; what is there already stays"},
    {"days", "N", "days before now that the made card covers (default 5)"},
};

void addOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription(
        QStringLiteral("Turns a demo scene, a file, a webcam or an RTSP camera into an Orvelle "
                       "camera.\nExit codes: 0 stopped by order or end of source, 2 wrong options, "
                       "3 unusable source, 4 port or UID not available."));
    for (const Option& option : kOptions) {
        parser.addOption(QCommandLineOption(QLatin1String(option.name), QLatin1String(option.text),
                                            QLatin1String(option.value)));
    }
    QCommandLineOption model(QStringLiteral("model"));
    model.setValueName(QStringLiteral("N"));
    model.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOption(model);
}

/// Reads options one after the other and keeps the first complaint.
class Reader {
public:
    explicit Reader(const QCommandLineParser& parser) : m_parser(parser) {}

    const QString& error() const { return m_error; }
    bool has(const char* name) const { return m_parser.isSet(QLatin1String(name)); }
    QString text(const char* name, const QString& fallback = {}) const {
        return has(name) ? m_parser.value(QLatin1String(name)) : fallback;
    }

    int64_t number(const char* name, int64_t fallback, int64_t min, int64_t max) {
        if (!has(name))
            return fallback;
        bool isNumber = false;
        const qlonglong value = text(name).toLongLong(&isNumber);
        if (isNumber && value >= min && value <= max)
            return value;
        complain(QStringLiteral("--%1 takes a number from %2 to %3")
                     .arg(QLatin1String(name))
                     .arg(min)
                     .arg(max));
        return fallback;
    }

    /// The value's index among `choices`.
    int choice(const char* name, const QStringList& choices) {
        const int index = has(name) ? choices.indexOf(text(name)) : 0;
        if (index < 0)
            complain(QStringLiteral("--%1 takes %2")
                         .arg(QLatin1String(name), choices.join(QLatin1String(" or "))));
        return std::max(index, 0);
    }

    void complain(const QString& error) {
        if (m_error.isEmpty())
            m_error = error;
    }

private:
    const QCommandLineParser& m_parser;
    QString m_error;
};

FeedFormat readFormat(Reader& reader) {
    constexpr int kWidths[] = {1280, 1920, 640};
    constexpr int kHeights[] = {720, 1080, 360};
    const int size = reader.choice(
        "size", {QStringLiteral("720p"), QStringLiteral("1080p"), QStringLiteral("360p")});
    FeedFormat format;
    format.width = kWidths[size];
    format.height = kHeights[size];
    format.framesPerSecond = static_cast<int>(reader.number("fps", 15, 1, kMaxFps));
    format.bitsPerSecond = reader.number("bitrate", usualBitRate(format), kMinBitRate, kMaxBitRate);
    return format;
}

QString readSource(Reader& reader) {
    const QString source = reader.text("source");
    if (withoutCredentials(source) != source)
        reader.complain(QStringLiteral(
            "--source holds a password that others could read; use ORVELLE_CAMERA_SOURCE"));
    const QString hidden = qEnvironmentVariable("ORVELLE_CAMERA_SOURCE");
    return source.isEmpty() && !reader.has("demo") ? hidden : source;
}

void readMedia(Reader& reader, CameraOptions& options) {
    constexpr AVCodecID kVideo[] = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC};
    constexpr AVCodecID kAudio[] = {AV_CODEC_ID_AAC, AV_CODEC_ID_PCM_ALAW, AV_CODEC_ID_NONE};
    options.videoCodec =
        kVideo[reader.choice("codec", {QStringLiteral("h264"), QStringLiteral("hevc")})];
    options.audioCodec = kAudio[reader.choice(
        "sound", {QStringLiteral("aac"), QStringLiteral("alaw"), QStringLiteral("none")})];
    options.format = readFormat(reader);
    options.hasSize = reader.has("size");
    options.hasBitRate = reader.has("bitrate");
    options.source = readSource(reader);
    options.isRepeated = !reader.has("once");
    options.scene = static_cast<int>(reader.number("scene", 0, 0, 1000));
    options.clipFile = reader.text("make-clip");
    options.cardDirectory = reader.text("sd");
    options.cardBytes = reader.number("sd-size", 2048, 16, 1 << 20) * 1024 * 1024;
    options.madeCard = reader.text("make-card");
    options.madeCardDays = static_cast<int>(reader.number("days", 5, 1, kMaxCardDays));
    options.clipSeconds = static_cast<int>(reader.number("seconds", 10, 1, kMaxClipSeconds));
}

void readIdentity(Reader& reader, CameraOptions& options) {
    options.uid = reader.text("uid", QStringLiteral("ORVELLEDEMO1"));
    options.name = reader.text("name", options.uid);
    options.cameras = static_cast<int>(reader.number("cameras", 1, 1, kMaxCameras));
    options.port = static_cast<uint16_t>(reader.number("port", 0, 0, 65'535));
    options.bindAddress = reader.text("bind", QStringLiteral("0.0.0.0"));
    options.networkName = reader.text("network-name");
    options.passwordFile = reader.text("password-file");
    options.stateDirectory = reader.text("state");
    options.isCodeAsked = reader.has("show-code");
    options.deviceType =
        static_cast<int>(reader.number(reader.has("model") ? "model" : "type", 0, 0, 1));
    if (reader.has("timezone"))
        options.timezoneMinutes = static_cast<int>(
            reader.number("timezone", 0, -kMaxTimezoneMinutes, kMaxTimezoneMinutes));
}

bool isUid(const QString& uid, int maxLength) {
    return !uid.isEmpty() && uid.size() <= maxLength &&
           std::all_of(uid.begin(), uid.end(), [](QChar character) {
               return character.unicode() < 128 && character.isLetterOrNumber();
           });
}

void validate(Reader& reader, const CameraOptions& options) {
    const int maxUid = options.cameras > 1 ? kMaxUidLength - 2 : kMaxUidLength;
    if (reader.has("sd") && options.cardDirectory.isEmpty())
        reader.complain(QStringLiteral("--sd takes a directory"));
    else if (!isUid(options.uid, maxUid))
        reader.complain(QStringLiteral("--uid takes 1 to %1 letters and digits").arg(maxUid));
    else if (options.port > 0 && options.port + options.cameras - 1 > 65'535)
        reader.complain(QStringLiteral("not enough ports above --port"));
    else if (reader.has("demo") && !options.source.isEmpty())
        reader.complain(QStringLiteral("--demo and --source exclude each other"));
    else if (!options.source.isEmpty() && options.deviceType != 0)
        reader.complain(QStringLiteral("only the demo scene can turn: leave out --type 1"));
    else if (reader.has("password-file") && options.passwordFile.isEmpty())
        reader.complain(QStringLiteral("--password-file takes a file"));
    else if (reader.has("state") && options.stateDirectory.isEmpty())
        reader.complain(QStringLiteral("--state takes a directory"));
}

}  // namespace

ParsedOptions parseOptions(const QStringList& arguments) {
    QCommandLineParser parser;
    addOptions(parser);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    ParsedOptions parsed;
    if (!parser.parse(arguments)) {
        parsed.error = parser.errorText();
    } else if (parser.isSet(help)) {
        parsed.text = parser.helpText();
    } else if (parser.isSet(version)) {
        parsed.text = QCoreApplication::applicationName() % QLatin1Char(' ') %
                      QCoreApplication::applicationVersion() % QLatin1Char('\n');
    } else if (!parser.positionalArguments().isEmpty()) {
        parsed.error = QStringLiteral("unexpected argument: %1")
                           .arg(parser.positionalArguments().constFirst());
    } else {
        Reader reader(parser);
        readIdentity(reader, parsed.options);
        readMedia(reader, parsed.options);
        validate(reader, parsed.options);
        parsed.error = reader.error();
    }
    return parsed;
}

}  // namespace orvelle
