#include "device/device_group.h"

#include <QImage>

#include <limits>

#include "device/device_manager.h"
#include "support/suites.h"
#include "test_tools.h"

namespace {

constexpr char kWhole[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?> <KvDeviceGroup> <groupId>1</groupId> "
    "<type>1</type> <layout>2</layout> <groupIndex>4</groupIndex> <name>Ours</name> "
    "<uids count=\"2\"> <uid>CAM1</uid> <uid>CAM0</uid> </uids> </KvDeviceGroup>";

const orvelle::test::XmlFiles kFiles{QStringLiteral("KvTUTKGroup")};

void write(const char* name, const QByteArray& fields, const QByteArray& uids) {
    kFiles.write(name, "<x>" + fields + "<uids count='9'><uid>" +
                           QByteArray(uids).replace(" ", "</uid><uid>") + "</uid></uids></x>");
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
        QVERIFY(single.save() && kFiles.has("CAM3") && single.groupId() == -1);
        KvDeviceGroup group;
        QVERIFY(!group.save());
        group.setType(KvDeviceGroup::kGroup);
        group.setLayout(2);
        group.setGroupIndex(4);
        group.setName(QStringLiteral("Ours"));
        group.setDevices({m_cameras[1], m_cameras[0]});
        QVERIFY(group.save());
        QCOMPARE(kFiles.read("1").simplified(), QByteArray(kWhole));
        KvDeviceGroup copy(group);
        QVERIFY(copy.groupIndex() == -1 && copy.save() && kFiles.has("2"));
        QVERIFY(copy.equals(&copy) && !copy.equals(&group) && !copy.equals(&single));
        group.removeFile();
        QVERIFY(!kFiles.has("1") && kFiles.has("2"));
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
        QVERIFY(KvDeviceGroup::loadAll(kFiles.directory()).empty());
        const QStringList lines = log.take();
        QCOMPARE(lines.size(), 6);  // the UID that leads outside is told as well
        for (const auto& [name, fields, uids] : cases)
            QCOMPARE(lines.filter(kFiles.path(name)).size(), 1);
    }

    void list_isSortedAndSane_whateverTheFilesHold() {
        write("CAM0", "<name>c</name><groupIndex>5</groupIndex>", "CAM0");
        write("CAM1", "<name>b</name><groupIndex>2</groupIndex>", "CAM1");
        write("CAM2", "<name>b</name><groupIndex>2</groupIndex>", "CAM2");
        const QByteArray absurd = "<type>1</type><layout>99</layout><groupId>2147483647</groupId>";
        QByteArray uids = "CAM4 ../x CAM4 99 CAM0";
        for (int i = 100; i < 1100; ++i)
            uids += ' ' + QByteArray::number(i);
        write("7", absurd + "<name>" + QByteArray(10000, 'n') + "</name>", uids);
        write("8", absurd + "<name>twin</name>", "CAM4");
        QVERIFY(kFiles.age("8", 60));
        load();
        m_manager->reorderGroups();
        const auto groups = m_manager->groups();
        QCOMPARE(groups.size(), 7);  // three cameras had no entry
        QVERIFY(groups[0]->name().size() == 10000 && groups[0]->layout() == 5);
        QCOMPARE(groups[0]->devices(), QList<KvDevice*>({m_cameras[4], m_cameras[0]}));
        QCOMPARE(groups[0]->uids().size(), KvDeviceGroup::kMaxMembers);
        QCOMPARE(m_manager->findDeviceGroup(m_cameras[0]), groups[3]);
        QVERIFY(groups[4]->firstDevice() == m_cameras[3] && !groups[4]->name().isEmpty());
        QVERIFY(groups[0]->swapDevices(0, 1) && !groups[0]->swapDevices(0, 2));
        QCOMPARE(groups[0]->uids().mid(0, 3).join(QLatin1Char(' ')),
                 QStringLiteral("CAM0 99 CAM4"));
        QCOMPARE(groups[0]->firstDevice(), m_cameras[0]);
        QVERIFY(m_manager->addGroup(std::make_unique<KvDeviceGroup>(*groups[0])));
        QCOMPARE(m_manager->groups().first()->key(), QStringLiteral("1"));
        QVERIFY(!m_manager->addGroup(std::make_unique<KvDeviceGroup>(m_cameras[0])));
        QVERIFY(m_manager->removeGroup(groups[3]) && m_manager->singleCameraGroups().size() == 5);
    }

    void entry_canBeRemoved_whateverBecameOfItsCameraOrItsFilesName() {
        write("GHOST1", "<name>ghost</name>", "GHOST1");
        write("odd", "<name>g</name><type>1</type><groupId>3</groupId>", "CAM1 GHOST1");
        load();
        m_manager->reorderGroups();
        m_manager->finishWrites();
        QVERIFY(kFiles.has("3") && !kFiles.has("odd"));
        m_manager->groups().last()->setGroupIndex(-1);
        m_manager->reorderGroups();  // writes both while they are removed
        for (KvDeviceGroup* entry : m_manager->groups()) {
            const std::unique_ptr<KvDeviceGroup> taken = m_manager->removeGroup(entry);
            QVERIFY(taken && taken->removeFile());
        }
        QVERIFY(QDir(kFiles.directory()).isEmpty());
    }

    void numberThatIsACamerasUid_isNoGroups_afterALoadThatHealsIt() {
        add("7");
        write("7", "<name>ours</name><type>1</type><groupId>7</groupId>", "CAM1");
        const QString picture =
            KvFileUtils::cachePath(QStringLiteral("7")) + QStringLiteral("/thumb.jpg");
        QVERIFY(QFile::copy(kFiles.path("7"), picture));
        for (const int lines : {1, 0}) {
            orvelle::test::LogLines log;
            load();
            QCOMPARE(log.take().filter(QStringLiteral("since a camera has that name")).size(),
                     lines);
            m_manager->finishWrites();
            QVERIFY(kFiles.read("7").contains("<type>0<") && kFiles.read("8").contains(">ours<"));
            QVERIFY(!QFile::exists(picture));
            restart({QStringLiteral("7")});
        }
    }

    void numbersThatNameAFileOrACamera_areGivenToNoGroup() {
        // The counter is at its end, 1 is a file that cannot be read, 2 a camera, 3 a camera that
        // is not bound any more, 4 a group.
        KvDeviceManager::setMaxGroupId(std::numeric_limits<int>::max());
        kFiles.write("1", "torn");
        add("2");
        write("4", "<name>g</name><type>1</type><groupId>4</groupId>", "CAM1 3");
        load();
        for (const char* key : {"5", "6"}) {
            auto group = std::make_unique<KvDeviceGroup>();
            group->setType(KvDeviceGroup::kGroup);
            group->setName(QStringLiteral("new"));
            const KvDeviceGroup* const listed = group.get();
            QVERIFY(m_manager->addGroup(std::move(group)));
            QCOMPARE(listed->key(), QLatin1String(key));
        }
        m_manager->finishWrites();
        QCOMPARE(kFiles.read("1"), QByteArray("torn"));
        QVERIFY(kFiles.read("4").contains("<groupId>4<") && kFiles.has("6"));
        // And a camera that comes later takes its name from the group that has it.
        QVERIFY(m_manager->makeRoomFor(QStringLiteral("5")));
        QVERIFY(!kFiles.has("5") && kFiles.has("7"));
    }

    void thumbnail_showsTheFirstFourMembers() {
        KvDeviceGroup group;
        group.setType(KvDeviceGroup::kGroup);
        group.setDevices(m_cameras);
        QVERIFY(group.save() && group.thumbnailPath().isEmpty());
        const QColor colours[] = {Qt::red, Qt::green, Qt::black, Qt::blue, Qt::white};
        for (const int i : {0, 1, 3, 4}) {
            QImage small(320, 180, QImage::Format_RGB32);
            small.fill(colours[i]);
            QVERIFY(small.save(group.deviceThumbnailPath(i)));
        }
        QVERIFY(QFile::copy(kFiles.path("1"), group.deviceThumbnailPath(2)));
        QVERIFY(group.deviceThumbnailPath(6).isEmpty() && group.deviceThumbnailPath(-1).isEmpty());
        const QString path = group.thumbnailPath();
        QVERIFY(coloursAt(path, 8, 8) == 4 && coloursAt(path, 950, 530) == 4);
        QVERIFY(coloursAt(path, 970, 8) == 2 && coloursAt(path, 1910, 530) == 2);
        QVERIFY(coloursAt(path, 8, 550) == 0 && coloursAt(path, 950, 1070) == 0);
        QVERIFY(coloursAt(path, 970, 550) == 1 && coloursAt(path, 1910, 1070) == 1);
        QVERIFY(QFile::remove(group.deviceThumbnailPath(0)));
        QCOMPARE(coloursAt(group.thumbnailPath(), 8, 8), 4);
        group.copyFrom(KvDeviceGroup(group));
        if (orvelle::test::FullDisk::isPossible()) {
            const orvelle::test::FullDisk disk(16000);
            QVERIFY(group.thumbnailPath().isEmpty());
        }
        QCOMPARE(coloursAt(group.thumbnailPath(), 8, 8), 0);
        group.setResolvedDevices(m_cameras.mid(1));
        QCOMPARE(coloursAt(group.thumbnailPath(), 8, 8), 2);
        group.setDevices({});
        QVERIFY(group.thumbnailPath().isEmpty() && !QFile::exists(path));
    }

private:
    void add(const char* uid) {
        auto device = std::make_unique<KvTUTKDevice>();
        device->setUid(QLatin1String(uid));
        QVERIFY(device->save() && m_manager->addDevice(std::move(device)));
    }
    void restart(const QStringList& uids) {
        KvDeviceManager::release();
        m_manager = KvDeviceManager::create();
        for (const QString& uid : uids)
            add(uid.toLatin1().constData());
    }
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
