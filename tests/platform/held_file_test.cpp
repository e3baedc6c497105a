#include "platform/held_file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/suites.h"

using orvelle::HeldFile;

class HeldFileTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("file")).toStdString();
        QFile file(QString::fromStdString(m_path));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("content") == 7);
    }

    void writer_waits_untilTheFileIsLetGo() {
        {
            const HeldFile held(m_path);
            QVERIFY(held.isHeld() && held.isUnchanged());
            QVERIFY(!opens(O_WRONLY) && errno == EWOULDBLOCK);
            QVERIFY(!held.isUnchanged());
        }
        QVERIFY(opens(O_WRONLY));
        const int writer = open(m_path.c_str(), O_WRONLY);
        QVERIFY(!HeldFile(m_path).isHeld());
        close(writer);
    }

    void reader_isLetIn() {
        HeldFile held(m_path);
        QVERIFY(opens(O_RDONLY) && held.isUnchanged());
        char content[16] = {};
        QCOMPARE(held.read(content, sizeof content), 7);
        QCOMPARE(held.read(content, sizeof content), 0);
        QCOMPARE(content, "content");
    }

    void change_isNoticed() {
        const std::string other = m_path + "2";
        {
            const HeldFile held(m_path);
            QCOMPARE(chmod(m_path.c_str(), 0640), 0);
            QVERIFY(!held.isUnchanged());
        }
        {
            const HeldFile held(m_path);
            QVERIFY(held.isUnchanged());
            QCOMPARE(rename(m_path.c_str(), other.c_str()), 0);
            QVERIFY(!held.isUnchanged());
            QCOMPARE(symlink(other.c_str(), m_path.c_str()), 0);
            QVERIFY(!held.isUnchanged());
        }
        QVERIFY(!HeldFile(m_path).isHeld());
        QVERIFY(HeldFile(other).isHeld());
        const std::string folder = m_folder->path().toStdString();
        {
            // Another folder in place of its own; the file itself is as it was.
            const HeldFile held(other);
            QCOMPARE(rename(folder.c_str(), (folder + "-moved").c_str()), 0);
            QCOMPARE(mkdir(folder.c_str(), 0700), 0);
            QFile file(QString::fromStdString(other));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("content") == 7);
            QVERIFY(!held.isUnchanged());
        }
        QVERIFY(QDir(QString::fromStdString(folder + "-moved")).removeRecursively());
    }

private:
    bool opens(int mode) const {
        const int file = open(m_path.c_str(), mode | O_NONBLOCK);
        if (file >= 0)
            close(file);
        return file >= 0;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::string m_path;
};

static const orvelle::test::RegisterSuite<HeldFileTest> kHeldFileTest;
#include "held_file_test.moc"
