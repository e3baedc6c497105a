#include <QDir>

#include "core/file_utils.h"
#include "device/tutk_device.h"
#include "link/device_code.h"
#include "log_lines.h"
#include "support/suites.h"

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

QString directory() {
    return KvFileUtils::devicesPath(QStringLiteral("KvTUTK"));
}

QString fileOf(const char* name) {
    return directory() + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".xml");
}

void write(const char* name, const QByteArray& content) {
    QFile file(fileOf(name));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
}

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
        write("CAM1", "old");
        const auto others = QFile::ReadOther | QFile::ReadGroup;
        QFile::setPermissions(fileOf("CAM1"), QFile::permissions(fileOf("CAM1")) | others);
        QVERIFY(m_device->save());
        QVERIFY(!(QFile::permissions(fileOf("CAM1")) & others));
        QFile file(fileOf("CAM1"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray(kWhole));
        QVERIFY(m_device->removeFile() && QDir(directory()).isEmpty());
        QVERIFY(!m_device->writeToFile(QStringLiteral("/nowhere/at/all.xml")));
    }

    void name_survivesTheFile_withoutWhatXmlCannotHold() {
        const QString name = QStringLiteral("\u9662\u5B50 \U0001F4F7 ]]>\"'");
        for (const QString& odd : {QString(QChar(1)), QString(QChar(0xFFFF)), QString(QChar(0))}) {
            m_device->setName(odd + name);
            QVERIFY(m_device->save());
            QCOMPARE(KvTUTKDevice::loadAll(directory()).at(0)->name(), name);
        }
        m_device->setName(QString(10000, QLatin1Char('n')) + QChar(0xD800));
        QVERIFY(m_device->save());
        QVERIFY(KvTUTKDevice::loadAll(directory()).at(0)->name().size() >= 10000);
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
            write(name, content);
        QFile::resize(fileOf("huge"), 100 << 20);
        QDir(directory()).mkdir(QStringLiteral("folder.xml"));
        write("z", kWhole);
        orvelle::test::LogLines log;
        const auto devices = KvTUTKDevice::loadAll(directory());
        const QStringList lines = log.take();
        QVERIFY(devices.size() == 1 && devices[0]->uid() == QStringLiteral("CAM1"));
        QCOMPARE(lines.size(), static_cast<int>(std::size(cases)));
        for (const auto& [name, content] : cases)
            QCOMPARE(lines.filter(fileOf(name)).size(), 1);
    }

    void fields_keepTheirInitialValues_whenMissing_andAreZeroWhenUnreadable() {
        const std::tuple<const char*, int, int, double> cases[] = {
            {"", 0, -1, 1.0},
            {"<volume>0.5</volume><mode>7</mode><port>80</port>", 80, 7, 0.5},
            {"<volume>loud</volume><mode>x</mode><port>99999999999</port>", 0, 0, 0.0},
            {"<volume>nan</volume><Port>80</Port><!-- c --><mode>3</mode>", 0, 3, 0.0},
        };
        for (const auto& [more, port, mode, volume] : cases) {
            write("a", withUid("CAM1", more));
            KvTUTKDevice device;
            QCOMPARE(device.readFromFile(fileOf("a")), 0);
            QVERIFY(device.equals(m_device.get()) && device.displayName() == device.uid());
            QVERIFY(device.port() == port && device.mode() == mode && device.volume() == volume);
        }
    }

    void ids_areNeverGivenTwice() {
        m_device->save();
        m_device->removeFile();
        KvTUTKDevice second;
        second.ensureDeviceId();
        second.ensureDeviceId();
        QVERIFY(m_device->deviceId() == 1 && second.deviceId() == 2);
    }

    void deviceCode_givesUidAndPassword_andTheLogHidesIt() {
        orvelle::test::LogLines log;
        const std::string code = orvelle::encodeDeviceCode("CAM1", "secret7");
        const KvTUTKDevice device(QString::fromStdString(code));
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
