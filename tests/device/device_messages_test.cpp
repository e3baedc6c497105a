#include "device/device_messages.h"

#include "support/suites.h"

using namespace orvelle;

namespace {

class DeviceMessagesTest : public QObject {
    Q_OBJECT

private slots:
    void requests_haveTheirExactBytes() {
        const STimeDay time = STimeDay::from(QDate(2020, 2, 29), QTime(23, 58, 57));
        const std::pair<QByteArray, const char*> cases[] = {
            {SMsgAVIoctrlPlayRecord::start(time).encode(),
             "010000001000000000000000e407021d06173a3900000000"},
            {SMsgAVIoctrlPlayRecord::stop().encode(),
             "000000000100000000000000000000000000000000000000"},
            {SMsgAVIoctrlListEventReq::forMonth(QDate(2024, 3, 15)).encode(),
             "00000000e807020104000000e807031f07173b3b11010000"},
            {SMsgAVIoctrlListEventReq::forMonth(QDate(2021, 1, 31)).encode(),
             "00000000e4070c0102000000e507011f07173b3b11010000"},
            {SMsgAVIoctrlPtzCmd::move(SMsgAVIoctrlPtzCmd::kUp, 0x1FE).encode(), "0101000000fe0000"},
            {SMsgAVIoctrlPtzCmd::move(12, 1).encode(), "0801000000010000"},
            {SMsgAVIoctrlPtzCmd::move(5, 1).encode(), "0001000000010000"},
        };
        for (const auto& [bytes, hex] : cases)
            QCOMPARE(bytes.toHex(), QByteArray(hex));
    }

    void overview_isRefused_whenItIsCutOrAbsurd() {
        const QByteArray whole = QByteArray::fromHex("0600000014105e5f80947c5fb85e02000200");
        const auto overview = CardOverviewReply::decode(whole.left(17));
        QVERIFY(overview && !overview->isMissing && overview->isReadOnly && overview->isFull);
        QCOMPARE(overview->oldestSec, 1'600'000'020U);
        QCOMPARE(overview->newestSec, 1'602'000'000U);
        QCOMPARE(overview->months, QVector<QDate>{QDate(2020, 10, 1)});
        QVERIFY(!CardOverviewReply::decode(whole.left(16)));
        QVERIFY(!CardOverviewReply::decode(QByteArray(whole).replace(14, 2, "\xff\xff")));
    }

    void replies_holdOnlyWhatArrived() {
        QByteArray whole;
        for (int i = 0; i < 102; ++i)
            whole.append(static_cast<char>('A' + i));
        whole[90] = '\0';
        for (int length = 0; length <= whole.size(); ++length) {
            // A copy of its own, so that the sanitizer sees any byte read beyond the end.
            const QByteArray part(whole.constData(), length);
            const auto info = SMsgAVIoctrlDeviceInfoResp::decode(part);
            QCOMPARE(info.model, QStringLiteral("ABCDEFGHIJKLMNOP").left(length));
            QCOMPARE(info.version.value_or(0), length < 36 ? 0u : 0x64636261u);
            QCOMPARE(info.totalMiB.value_or(0), length < 44 ? 0u : 0x6C6B6A69u);
            const auto wifi = SMsgAVIoctrlGetWifiResp_vbk::decode(part);
            QCOMPARE(wifi.ssid.size(), std::min(length, 32));
            QCOMPARE(wifi.mac.isEmpty(), length <= 84);
            const auto played = SMsgAVIoctrlPlayRecordResp::decode(part);
            QCOMPARE(played.command.value_or(0), length < 4 ? 0u : 0x44434241u);
            QCOMPARE(played.result.value_or(-1), length < 8 ? -1 : 0x48474645);
            QCOMPARE(StreamQualityReply::decode(part).quality.value_or(0), length < 5 ? 0 : 'E');
            QCOMPARE(TimeZoneReply::decode(part).timeBase.has_value(), length >= 12);
        }
        QCOMPARE(SMsgAVIoctrlGetWifiResp_vbk::decode(whole).mac.size(), 6);
    }

    void names_areMadeSafeToShow() {
        const QByteArray name(
            "\xE2\x80\xAE"
            "a\x1B[1m\r\n b");
        QByteArray wifi(100, '\0');
        wifi.replace(0, name.size(), name);
        wifi.replace(68, name.size(), name);
        wifi.replace(84, name.size(), name);
        const auto network = SMsgAVIoctrlGetWifiResp_vbk::decode(wifi);
        for (const QString& shown : {SMsgAVIoctrlDeviceInfoResp::decode(wifi).model, network.ssid,
                                     network.ip, network.mac})
            QCOMPARE(shown, QStringLiteral("a[1m b"));
    }

    void eventList_believesNoCount() {
        using Reply = SMsgAVIoctrlListEventResp_VBK;
        const QByteArray reply =
            QByteArray::fromHex("ff01000000e1f5050300000001000000ffffffff02000000");
        const Reply whole = Reply::decode(reply);
        QVERIFY(whole.count == 255 && whole.misscard == 1 && whole.runs.size() == 2);
        QVERIFY(whole.runs[0].start == 100000000 && whole.runs[0].num == 3);
        QCOMPARE(whole.runs[1].num, Reply::kMaxRunMinutes);
        for (const auto& [length, runs] : {std::pair(0, 0), {11, 0}, {12, 1}, {19, 1}})
            QCOMPARE(Reply::decode(reply.left(length)).runs.size(), runs);
        QVERIFY(Reply::decode(QByteArray(20, '\0')).runs.isEmpty());
    }
};

const orvelle::test::RegisterSuite<DeviceMessagesTest> kRegistered;

}  // namespace

#include "device_messages_test.moc"
