#include "camera/camera_commands.h"

#include "camera/media_kit.h"
#include "support/suites.h"

namespace {

using orvelle::CameraActions;
using orvelle::CameraCommands;
using orvelle::CameraProfile;
using orvelle::CardOverview;
using orvelle::CardSpace;
using orvelle::ListRequest;
using orvelle::PlayRequest;
using orvelle::RoomGrant;

/// Writes down what a command did, as text.
class Recorder : public CameraActions {
public:
    void reply(int clientId, uint32_t type, const std::vector<uint8_t>& payload) override {
        const QByteArray bytes(reinterpret_cast<const char*>(payload.data()), int(payload.size()));
        note(clientId, QByteArray::number(type, 16) + ':' + bytes.toHex());
    }
    void setVideo(int clientId, bool on) override { note(clientId, on ? "video" : "no video"); }
    void setAudio(int clientId, bool on) override { note(clientId, on ? "audio" : "no audio"); }
    void turn(int clientId, uint8_t control, uint8_t speed) override {
        note(clientId, "turn " + QByteArray::number(control) + ' ' + QByteArray::number(speed));
    }
    CardOverview cardOverview() override {
        return {true, false, true, 1'600'000'020, 1'602'000'000, {1'600'000'020, 1'602'000'000}};
    }
    CardSpace cardSpace() override { return {int64_t{32'000} << 20, (int64_t{31} << 20) - 1}; }
    void listRecordings(int clientId, const ListRequest& request) override {
        note(clientId, "list " + QByteArray::number(qlonglong(request.fromSec)) + ' ' +
                           QByteArray::number(qlonglong(request.toSec)));
    }
    void playRecording(int clientId, const PlayRequest& request) override {
        note(clientId, "play " + QByteArray::number(request.command) + ' ' +
                           QByteArray::number(qlonglong(request.fromSec.value_or(-1))));
    }
    void downloadRecording(int clientId, const PlayRequest& request) override {
        note(clientId, "down");
        playRecording(clientId, request);
    }
    void grantRoom(int clientId, const RoomGrant& room) override {
        note(clientId, "room " + QByteArray::number(room.channel) + ' ' +
                           QByteArray::number(room.frames) + ' ' +
                           QByteArray::number(qulonglong(room.bytes)));
    }
    void formatCard(int clientId) override { note(clientId, "format"); }
    QByteArray notes;

private:
    void note(int clientId, const QByteArray& text) { notes += char('0' + clientId) + text; }
};

QByteArray zeros(int size) {
    return QByteArray(size, '\0');
}

QByteArray text(const QByteArray& value, int size) {
    return value.leftJustified(size, '\0');
}

QByteArray info(const char* version) {
    return text("OC-PT1", 16) + text("Orvelle", 16) + QByteArray::fromHex(version) + zeros(4) +
           QByteArray::fromHex("007d00001e000000") + zeros(8);
}

}  // namespace

class CommandsTest : public QObject {
    Q_OBJECT

private slots:
    void message_isAnsweredByteForByte_data() {
        QTest::addColumn<uint>("type");
        QTest::addColumn<QByteArray>("payload");
        QTest::addColumn<QByteArray>("effect");
        QTest::addColumn<int>("height");
        const auto row = [](const char* name, uint type, const QByteArray& payload,
                            const QByteArray& effect, int height = 720) {
            QTest::newRow(name) << type << payload << effect << height;
        };
        const auto answer = [](const char* type, const QByteArray& payload) -> QByteArray {
            return QByteArray("7") + type + ':' + payload.toHex();
        };
        const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
        row("start notice", 0x00FF, zeros(4), "");
        row("start video", 0x01FF, zeros(8), "7video");
        row("stop video", 0x02FF, zeros(8), "7no video");
        row("start audio", 0x0300, zeros(8), "7audio");
        row("stop audio", 0x0301, zeros(8), "7no audio");
        row("keep-alive", 0x0803, zeros(8), "");
        row("turn", 0x1001, hex("0601000000050000"), "7turn 6 1");
        row("quality 1080p", 0x0322, zeros(8), answer("323", hex("0000000001000000")), 1080);
        row("quality 720p", 0x0322, zeros(8), answer("323", hex("0000000003000000")));
        row("quality 360p", 0x0322, zeros(8), answer("323", hex("0000000003000000")), 360);
        row("device of 8", 0x0330, zeros(8), answer("331", info("06010101")));
        row("device of 4", 0x0330, zeros(4), answer("331", info("06010101")), 1080);
        row("device 360p", 0x0330, zeros(4), answer("331", info("06414101")), 360);
        // A name that is too long ends between two characters of three bytes.
        row("network", 0x0344, zeros(4),
            answer("345", QString(10, QChar(0x7F51)).toUtf8() + zeros(38) +
                              text("192.168.1.20", 16) + text("AA:BB:CC:DD:EE:FF", 18)));
        row("time zone", 0x03A0, zeros(8), answer("3a1", hex("0c00000001000000a6ffffff")));
        row("device type", 0x0680, zeros(8), answer("681", hex("01000000")));
        // Read-only and full; September and October of 2020.
        row("overview", 0x7000, zeros(8),
            answer("7001", hex("0e000000"
                               "14105e5f"
                               "80947c5f"
                               "b85e0200"
                               "03")));
        row("format", 0x0380, zeros(8), "7format");
        // Times of a request, in the camera's clock for a list, in UTC for a playback.
        const auto list = [&](const char* from, const char* to) -> QByteArray {
            return zeros(4) + hex(from) + hex(to) + hex("11010000");
        };
        const auto play = [&](const char* command, const char* time) -> QByteArray {
            return hex("01000000") + hex(command) + zeros(4) + hex(time) + zeros(4);
        };
        row("list", 0x0660, list("e407030107000000", "e407041e04173b3b"),
            "7list 1583026200 1588296599");
        row("list from year 0", 0x0660, list("0000010107000000", "e407041e04173b3b"), "7list 0 -1");
        row("list to month 13", 0x0660, list("e407030107000000", "e4070d0104173b3b"), "7list 0 -1");
        row("play", 0x031A, play("10000000", "e407030107010203"), "7play 16 1583024523");
        row("download", 0x7002, play("10000000", "e407030107010203"), "7down7play 16 1583024523");
        row("play on day 30 of February", 0x031A, play("10000000", "e407021e07010203"),
            "7play 16 -1");
        row("play at hour 24", 0x031A, play("10000000", "e407030107180000"), "7play 16 -1");
        row("room", 0x0670,
            hex("03000000"
                "05000000"
                "0100000002000000"),
            "7room 3 5 8589934593");
        row("stop playing", 0x031A, zeros(4) + hex("01000000") + zeros(16), "7play 1 -1");
        row("longer than its layout", 0x01FF, zeros(1388), "7video");
    }

    void message_isAnsweredByteForByte() {
        QFETCH(uint, type);
        QFETCH(QByteArray, payload);
        CameraProfile profile;
        profile.deviceType = 1;
        profile.timezoneMinutes = -90;
        QFETCH(int, height);
        profile.pictureHeight = height;
        profile.networkName = QString(11, QChar(0x7F51));
        profile.ipAddress = QStringLiteral("192.168.1.20");
        profile.macAddress = QStringLiteral("AA:BB:CC:DD:EE:FF");
        Recorder recorder;
        CameraCommands commands(profile, &recorder);
        const auto* bytes = reinterpret_cast<const uint8_t*>(payload.constData());
        commands.handle(7, type, bytes, size_t(payload.size()));
        QTEST(recorder.notes, "effect");
        recorder.notes.clear();
        commands.handle(7, type, bytes, 3);
        QCOMPARE(recorder.notes, QByteArray());
    }

    void refusal_isLoggedOnceForAType_andNotWithoutEnd() {
        Recorder recorder;
        const CameraProfile profile;
        CameraCommands commands(profile, &recorder);
        const uint8_t bytes[8] = {3};
        const orvelle::test::WarningCount warnings;
        for (int i = 0; i < 3; ++i) {
            commands.handle(7, 0x7777, nullptr, 0);
            commands.handle(7, 0x1001, bytes, 7);
        }
        QCOMPARE(warnings.value(), 2);
        for (uint32_t type = 0x8000; type < 0x9000; ++type)
            commands.handle(7, type, bytes, 8);
        QVERIFY(warnings.value() <= 64);
        QCOMPARE(recorder.notes, QByteArray());
    }
};

static const orvelle::test::RegisterSuite<CommandsTest> s_commandsTest;

#include "commands_test.moc"
