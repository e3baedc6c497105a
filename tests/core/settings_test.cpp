#include "core/configure.h"
#include "core/file_utils.h"

#include <QDir>

#include "support/suites.h"

namespace {

class SettingsTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QDir(KvFileUtils::dataRoot()).removeRecursively(); }

    void file_comesWithTheFirstWrite() {
        KvConfigure settings;
        QVERIFY(settings.getBool(m_key, true) && !settings.contains(m_key));
        QVERIFY(!settings.remove(m_key) && !QFile::exists(file()));
        settings.setBool(m_key, false);
        QVERIFY(QFile::exists(file()) && !KvConfigure().getBool(m_key, true));
        QVERIFY(KvConfigure().remove(m_key) && !KvConfigure().contains(m_key));
    }

    void value_comesBack_andIsANumberOrNot() {
        const struct {
            const char* text;
            int number;
        } cases[] = {{"12", 12},        {"-5", -5},
                     {"12 cameras", 0}, {"99999999999", 0},
                     {"", 0},           {"D:\\\xE5\xBD\x95/a, b;c=d%20\"[e]\"", 0},
                     {" a\r\nb\t ", 0}, {"@Variant(\\x0)", 0}};
        for (const auto& [text, number] : cases) {
            KvConfigure().setString(m_key, QString::fromUtf8(text));
            QCOMPARE(KvConfigure().getString(m_key, m_key), QString::fromUtf8(text));
            QCOMPARE(KvConfigure().getInt(m_key, 0), number);
        }
    }

    void damagedFile_isReadAsDefaults_andWrittenAnew() {
        QByteArray noise;
        for (int i = 0; i < 5000; ++i)
            noise.append(static_cast<char>(i * 7919 >> 3));
        for (const QByteArray& content :
             {noise, QByteArray("[General]\ndevice_max_"), QByteArray("device_max_id=\"\\x4e"),
              QByteArray("device_max_id=@Variant(\\0\\0\\0\\xff\\xff)\n"),
              QByteArray(100 << 20, 'x')}) {
            QFile damaged(file());
            QVERIFY(damaged.open(QIODevice::WriteOnly) && damaged.write(content) > 0);
            damaged.close();
            QCOMPARE(KvConfigure().getInt(m_key, 3), 3);
            KvConfigure().setInt(m_key, 4);
            QCOMPARE(KvConfigure().getInt(m_key, 3), 4);
        }
    }

    void paths_createTheirWholeChain() {
        const QString name = QStringLiteral("U1");
        QString (*const pathsOfName[])(const QString&) = {
            KvFileUtils::cachePath, KvFileUtils::devicesPath, KvFileUtils::screenshotPath,
            KvFileUtils::videoPath};
        const char* expected[] = {"/cache/U1", "/Devices/U1", "/U1/Screenshot", "/U1/Video"};
        for (int i = 0; i < 4; ++i) {
            QDir(KvFileUtils::dataRoot()).removeRecursively();
            const QString path = pathsOfName[i](name);
            QVERIFY(KvFileUtils::exists(path));
            QCOMPARE(path, KvFileUtils::dataRoot() + QLatin1String(expected[i]));
        }
    }

    void mediaRoot_fallsBack_whenTheChosenOneIsGoneAndReset() {
        const QString uid = QStringLiteral("U1");
        // A plain file stands where the directory should be: nothing can be created below it.
        KvConfigure().setString(orvelle::settings::kMediaRoot, file());
        QCOMPARE(KvFileUtils::videoPath(uid), file() + QStringLiteral("/U1/Video"));
        QVERIFY(!KvFileUtils::exists(KvFileUtils::videoPath(uid)));
        QVERIFY(KvFileUtils::resetMediaRoot() && !KvFileUtils::resetMediaRoot());
        QVERIFY(KvFileUtils::exists(KvFileUtils::videoPath(uid)));
    }

private:
    static QString file() {
        return KvFileUtils::configurePath() + QStringLiteral("/configure.ini");
    }

    const QString m_key = orvelle::settings::kDeviceMaxId;
};

const orvelle::test::RegisterSuite<SettingsTest> kRegistered;

}  // namespace

#include "settings_test.moc"
