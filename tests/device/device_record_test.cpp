#include "device/tutk_device.h"
#include "link/device_code.h"
#include "support/suites.h"
#include "test_tools.h"

namespace {

constexpr char kWhole[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<KvTUTKDevice>
    <deviceId>1</deviceId>
    <name>Yard &amp; gate</name>
    <ip></ip>
    <uid>CAM1</uid>
    <password>p&lt;w</password>
    <port>0</port>
    <mode>-1</mode>
    <volume>0.25</volume>
</KvTUTKDevice>
)";

const orvelle::test::XmlFiles kFiles{QStringLiteral("KvTUTK")};

QByteArray withUid(const QByteArray& uid, const QByteArray& more = {}) {
    return "<x><uid>" + uid + "</uid>" + more + "</x>";
}

class DeviceRecordTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QDir(KvFileUtils::dataRoot()).removeRecursively();
        m_device = std::make_unique<KvTUTKDevice>();
        m_device->setUid(QStringLiteral("CAM1"));
    }

    void file_hasItsExactLayout_andIsItsOwnersOnly() {
        m_device->setName(QStringLiteral("Yard & gate"));
        m_device->setPassword(QStringLiteral("p<w"));
        m_device->setVolume(0.25);
        kFiles.write("CAM1", "old");
        const QString path = kFiles.path("CAM1");
        const auto others = QFile::ReadOther | QFile::ReadGroup;
        QFile::setPermissions(path, QFile::permissions(path) | others);
        QVERIFY(m_device->save());
        QVERIFY(!(QFile::permissions(path) & others));
        QCOMPARE(kFiles.read("CAM1"), QByteArray(kWhole));
        QVERIFY(m_device->removeFile() && QDir(kFiles.directory()).isEmpty());
        KvTUTKDevice second;
        second.ensureDeviceId();
        QCOMPARE(second.deviceId(), 2);
        QVERIFY(!m_device->writeToFile(QStringLiteral("/nowhere/at/all.xml")));
    }

    void fileOfAnyName_isReplacedAndRemoved_withItsCamera() {
        for (const bool isSaved : {false, true}) {
            kFiles.write("copy of cam", kWhole);
            const auto devices = KvTUTKDevice::loadAll(kFiles.directory());
            QVERIFY(devices.size() == 1);
            if (isSaved) {
                QVERIFY(devices[0]->save());
                QVERIFY(kFiles.has("CAM1") && !kFiles.has("copy of cam"));
            }
            QVERIFY(devices[0]->removeFile());
            QVERIFY(QDir(kFiles.directory()).isEmpty());
        }
    }

    void newerOfTwoFiles_counts_andTheOtherIsSetAside() {
        for (const char* newer : {"CAM1", "restored"}) {
            QDir(kFiles.directory()).removeRecursively();
            for (const char* name : {"CAM1", "restored"}) {
                const bool isNewer = qstrcmp(name, newer) == 0;
                kFiles.write(name,
                             withUid("CAM1", isNewer ? "<name>new</name>" : "<name>old</name>"));
                QVERIFY(kFiles.age(name, isNewer ? 5 : 60));
            }
            for (const int lines : {1, 0}) {
                orvelle::test::LogLines log;
                const auto devices = KvTUTKDevice::loadAll(kFiles.directory());
                QCOMPARE(log.take().size(), lines);
                QVERIFY(devices.size() == 1 && devices[0]->name() == QLatin1String("new"));
            }
            QCOMPARE(
                QDir(kFiles.directory()).entryList({QStringLiteral("*.old")}, QDir::Files).size(),
                1);
        }
    }

    void oldFile_stays_whenTheDiskIsFull() {
        if (!orvelle::test::FullDisk::isPossible())
            QSKIP("no limit on the size of files");
        QVERIFY(m_device->save());
        const QByteArray old = kFiles.read("CAM1");
        m_device->setName(QStringLiteral("new"));
        orvelle::test::LogLines log;
        bool isSaved = true;
        {
            const orvelle::test::FullDisk disk(100);
            isSaved = m_device->save();
        }
        QVERIFY(!isSaved && kFiles.read("CAM1") == old);
        QCOMPARE(log.take().filter(QStringLiteral("cannot write")).size(), 1);
    }

    void name_survivesTheFile_withoutWhatXmlCannotHold() {
        const QString name = QStringLiteral("\u9662\u5B50 \U0001F4F7 ]]>\"'");
        for (const QString& odd : {QString(QChar(1)), QString(QChar(0xFFFF)), QString(QChar(0))}) {
            m_device->setName(odd + name);
            QVERIFY(m_device->save());
            QCOMPARE(KvTUTKDevice::loadAll(kFiles.directory()).at(0)->name(), name);
        }
        m_device->setName(QString(10000, QLatin1Char('n')) + QChar(0xD800));
        QVERIFY(m_device->save() && !KvTUTKDevice::loadAll(kFiles.directory()).empty());
    }

    void badFiles_areSkippedWithOneLineEach_andTheRestLoads() {
        const std::pair<const char*, QByteArray> cases[] = {
            {"empty", ""},
            {"torn", QByteArray(kWhole).left(180)},
            {"binary", QByteArray("\0\1\2\3\xFF", 5)},
            {"latin", withUid("CAM1", "<name>\xE4\xF6</name>")},
            {"deep", QByteArray("<a>").repeated(150000)},
            {"bomb", "<!DOCTYPE x [<!ENTITY a \"aaaa\">]>" + withUid("CAM1", "<name>&a;</name>")},
            {"nouid", "<x><name>n</name></x>"},
            {"traversal", withUid("../../CAM1")},
            {"digits", withUid("\xD9\xA1\xD9\xA2")},
            {"toolong", withUid(QByteArray(21, 'A'))},
            {"huge", "<x>"},
        };
        for (const auto& [name, content] : cases)
            kFiles.write(name, content);
        QFile::resize(kFiles.path("huge"), 100 << 20);
        QDir(kFiles.directory()).mkdir(QStringLiteral("folder.xml"));
        kFiles.write("y", withUid("CAM2", "<port>99999999999</port><Mode>7</Mode><alien/>"));
        kFiles.write("z", kWhole);
        orvelle::test::LogLines log;
        const auto devices = KvTUTKDevice::loadAll(kFiles.directory());
        const QStringList lines = log.take();
        QVERIFY(devices.size() == 2 && devices[1]->equals(m_device.get()));
        QVERIFY(devices[1]->volume() == 0.25 && devices[0]->volume() == 1.0);
        QVERIFY(devices[0]->port() == 0 && devices[0]->mode() == -1);
        QCOMPARE(lines.size(), static_cast<int>(std::size(cases)));
        for (const auto& [name, content] : cases)
            QCOMPARE(lines.filter(kFiles.path(name)).size(), 1);
    }

    void deviceCode_givesUidAndPassword_andTheLogHidesIt() {
        orvelle::test::LogLines log;
        const KvTUTKDevice device(
            QString::fromStdString(orvelle::encodeDeviceCode("CAM1", "secret7")));
        QVERIFY(device.equals(m_device.get()));
        QCOMPARE(device.password(), QStringLiteral("secret7"));
        const KvTUTKDevice unusable(QStringLiteral("no code"));
        QVERIFY(unusable.uid().isEmpty() && unusable.password().isEmpty());
        const QStringList lines = log.take();
        QVERIFY(lines.size() == 2 && lines.filter(QStringLiteral("secret7")).isEmpty());
    }

private:
    std::unique_ptr<KvTUTKDevice> m_device;
};

const orvelle::test::RegisterSuite<DeviceRecordTest> kRegistered;

}  // namespace

#include "device_record_test.moc"
