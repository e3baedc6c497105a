#include "core/file_writer.h"

#include <QSemaphore>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>

#include "support/suites.h"

using orvelle::FileWriter;

/// A slow disk is played by the call that reports a failure.
class FileWriterTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_directory = std::make_unique<QTemporaryDir>();
        m_failures = 0;
        m_isDiskDone = false;
        m_writer = std::make_unique<FileWriter>([this] {
            ++m_failures;
            m_disk.acquire();
            m_isDiskDone = true;
        });
    }

    void cleanup() { m_writer.reset(); }

    void lastWord_isWhatStays() {
        block();
        m_writer->write(path("twice"), "old");
        m_writer->write(path("dropped"), "never");
        m_writer->write(path("twice"), "new");
        m_writer->forget(path("dropped"));
        QVERIFY(!QFile::exists(path("twice")));
        m_disk.release();
        m_writer->finish();
        QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files),
                 QStringList(QStringLiteral("twice")));
        QCOMPARE(read("twice"), QByteArray("new"));
        QCOMPARE(m_failures.load(), 1);
    }

    void forget_waitsForTheWriteThatRuns() {
        block();
        std::atomic<bool> isAsked{false};
        bool wasDone = false;
        std::thread forgetting([&] {
            isAsked = true;
            m_writer->forget(unwritable());
            wasDone = m_isDiskDone;
        });
        QTRY_VERIFY(isAsked);
        m_writer->forget(path("other"));  // does not wait for it
        m_disk.release();
        forgetting.join();
        QVERIFY(wasDone);
    }

    void whatWaits_isWrittenAtTheEnd() {
        block();
        for (const char* name : {"a", "b", "c"})
            m_writer->write(path(name), name);
        m_disk.release();
        m_writer.reset();
        QCOMPARE(read("a") + read("b") + read("c"), QByteArray("abc"));
    }

private:
    QString path(const char* name) const { return m_directory->filePath(QLatin1String(name)); }
    QString unwritable() const { return path("no/such/folder"); }
    QByteArray read(const char* name) const {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void block() {
        m_writer->write(unwritable(), "x");
        QTRY_COMPARE(m_failures.load(), 1);
    }

    std::unique_ptr<QTemporaryDir> m_directory;
    QSemaphore m_disk;
    std::atomic<int> m_failures{0};
    std::atomic<bool> m_isDiskDone{false};
    std::unique_ptr<FileWriter> m_writer;
};

static const orvelle::test::RegisterSuite<FileWriterTest> kRegister;

#include "file_writer_test.moc"
