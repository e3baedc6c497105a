#include "device/device_group.h"

#include <QDir>
#include <QImage>

#include "core/file_utils.h"
#include "device/device_manager.h"
#include "log_lines.h"
#include "support/suites.h"

namespace {

constexpr char kWhole[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <KvDeviceGroup> <groupId>1</groupId> "
    "<type>1</type> <layout>2</layout> <groupIndex>4</groupIndex> <name>Ours</name> "
    "<uids count=\"2\"> <uid>CAM1</uid> <uid>CAM0</uid> </uids> </KvDeviceGroup>";

QString directory() {
    return KvFileUtils::devicesPath(QStringLiteral("KvTUTKGroup"));
}

QString fileOf(const char* name) {
    return directory() + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".xml");
}

void write(const char* name, const QByteArray& fields, const QByteArray& uids) {
    QFile file(fileOf(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<x>" + fields + "<uids count='9'><uid>" +
               QByteArray(uids).replace(" ", "</uid><uid>") + "</uid></uids></x>");
}

void paint(const QString& path, const QColor& colour) {
    QImage image(320, 180, QImage::Format_RGB32);
    image.fill(colour);
    QVERIFY(image.save(path));
}

// 4 for red, 2 for green and 1 for blue, which survives the compression.
int coloursAt(const QString& path, int x, int y) {
    const QColor colour = QImage(path).pixelColor(x, y);
    return colour.red() / 128 * 4 + colour.green() / 128 * 2 + colour.blue() / 128;
}

class DeviceGroupTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QDir(KvFileUtils::dataRoot()).removeRecursively();
        m_manager = KvDeviceManager::create();
        for (int i = 0; i < 6; ++i) {
            auto device = std::make_unique<KvTUTKDevice>();
            device->setUid(QStringLiteral("CAM%1").arg(i));
            m_manager->addDevice(std::move(device));
        }
        m_cameras = m_manager->devicesSnapshot();
    }
    void cleanup() { KvDeviceManager::release(); }

    void file_isNamedByIdOrUid_andHasItsExactLayout() {
        KvDeviceGroup single(m_cameras[3]);
        QVERIFY(single.save() && QFile::exists(fileOf("CAM3")) && single.groupId() == -1);
        KvDeviceGroup group;
        QVERIFY(!group.save());
        group.setType(KvDeviceGroup::kGroup);
        group.setLayout(2);
        group.setGroupIndex(4);
        group.setName(QStringLiteral("Ours"));
        group.setDevices({m_cameras[1], m_cameras[0]});
        QVERIFY(group.save());
        QFile file(fileOf("1"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll().simplified(), QByteArray(kWhole));
        KvDeviceGroup copy(group);
        QVERIFY(copy.groupIndex() == -1 && copy.save() && QFile::exists(fileOf("2")));
        QVERIFY(copy.equals(&copy) && !copy.equals(&group) && !copy.equals(&single));
        group.removeFile();
        QVERIFY(!QFile::exists(fileOf("1")) && QFile::exists(fileOf("2")));
    }

    void badFiles_areSkippedWithOneLineEach() {
        const char* const cases[][3] = {{"nameless", "<name></name>", "CAM1"},
                                        {"alien", "<name>n</name><type>7</type>", "CAM1"},
                                        {"outside", "<name>n</name>", "../../CAM1"},
                                        {"crowd", "<name>n</name>", "CAM1 CAM2"},
                                        {"torn", "<name>", ""}};
        for (const auto& [name, fields, uids] : cases)
            write(name, fields, uids);
        orvelle::test::LogLines log;
        QVERIFY(KvDeviceGroup::loadAll(directory()).empty());
        const QStringList lines = log.take();
        QCOMPARE(lines.size(), 5);
        for (const auto& [name, fields, uids] : cases)
            QCOMPARE(lines.filter(fileOf(name)).size(), 1);
    }

    void absurdValues_areHarmless() {
        const QByteArray members = "CAM0 ../x CAM0 CAM5 " + QByteArray("GONE ").repeated(1000);
        QByteArray fields = "<type>1</type><layout>99</layout><groupId>2147483647</groupId><name>";
        write("9", fields + QByteArray(10000, 'n') + "</name>",
              members +
                  "G0 G1 G2 G3 G4 G5 G6 "
                  "G7 G8 G9 H0 H1 H2 H3 H4 H5 H6 H7");
        load();
        KvDeviceGroup* group = m_manager->groups().value(0);
        QVERIFY(group && group->name().size() == 10000 && group->layout() == 5);
        QCOMPARE(group->uids().size(), KvDeviceGroup::kMaxMembers);
        QCOMPARE(group->devices(), QList<KvDevice*>({m_cameras[0], m_cameras[5]}));
        QVERIFY(m_manager->addGroup(std::make_unique<KvDeviceGroup>(*group)));
    }

    void list_isSortedNumberedAndWithoutTwins() {
        write("CAM0", "<name>c</name><groupIndex>5</groupIndex>", "CAM0");
        write("CAM1", "<name>b</name><groupIndex>2</groupIndex>", "CAM1");
        write("CAM2", "<name>b</name><groupIndex>2</groupIndex>", "CAM2");
        write("7", "<name>a</name><type>1</type><groupId>7</groupId><groupIndex>-1</groupIndex>",
              "CAM4 GONE CAM0");
        write("8", "<name>twin</name><type>1</type><groupId>7</groupId>", "CAM4");
        load();
        m_manager->reorderGroups();
        const auto groups = m_manager->groups();
        QCOMPARE(groups.size(), 4);
        QVERIFY(groups[0]->key() == QStringLiteral("7") && groups[3]->groupIndex() == 3);
        QVERIFY(groups[0]->devices().size() == 2 && groups[0]->uids().size() == 3);
        QCOMPARE(m_manager->findDeviceGroup(m_cameras[0]), groups[3]);
        QVERIFY(m_manager->addGroup(std::make_unique<KvDeviceGroup>(*groups[0])));
        QCOMPARE(m_manager->groups().first()->key(), QStringLiteral("8"));
        QVERIFY(!m_manager->addGroup(std::make_unique<KvDeviceGroup>(m_cameras[0])));
        QVERIFY(m_manager->removeGroup(groups[3]) && m_manager->singleCameraGroups().size() == 2);
    }

    void thumbnail_showsTheFirstFourMembers() {
        KvDeviceGroup group;
        group.setType(KvDeviceGroup::kGroup);
        group.setDevices(m_cameras);
        QVERIFY(group.save() && group.thumbnailPath().isEmpty() && !group.isThumbnailReady());
        const QColor colours[] = {Qt::red, Qt::green, Qt::black, Qt::blue, Qt::white};
        for (const int i : {0, 1, 3, 4})
            paint(group.deviceThumbnailPath(i), colours[i]);
        QFile torn(group.deviceThumbnailPath(2));
        QVERIFY(torn.open(QIODevice::WriteOnly) && torn.write("\xFF\xD8\xFF\xE0 torn") > 0);
        QVERIFY(group.deviceThumbnailPath(6).isEmpty() && group.deviceThumbnailPath(-1).isEmpty());
        const QString path = group.thumbnailPath();
        for (const int edge : {8, 530}) {
            QCOMPARE(coloursAt(path, edge, edge), 4);
            QCOMPARE(coloursAt(path, 960 + edge, edge), 2);
            QCOMPARE(coloursAt(path, edge, 540 + edge), 0);
            QCOMPARE(coloursAt(path, 960 + edge, 540 + edge), 1);
        }
        paint(group.deviceThumbnailPath(0), Qt::white);
        QCOMPARE(coloursAt(group.thumbnailPath(), 8, 8), 4);
        group.setThumbnailReady(false);
        QCOMPARE(coloursAt(group.thumbnailPath(), 8, 8), 7);
    }

private:
    void load() {
        m_manager->start(KvFileUtils::devicesPath());
        m_manager->stopInitThread();
    }

    KvDeviceManager* m_manager = nullptr;
    QList<KvDevice*> m_cameras;
};

const orvelle::test::RegisterSuite<DeviceGroupTest> kRegistered;

}  // namespace

#include "device_group_test.moc"
