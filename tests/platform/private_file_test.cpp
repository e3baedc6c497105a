#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/private_file.h"
#include "platform/secret_memory.h"
#include "platform/user_folders.h"
#include "support/suites.h"

using orvelle::FilePrivacy;

namespace {

int modeOf(const std::string& path) {
    struct stat entry {};
    return lstat(path.c_str(), &entry) == 0 ? static_cast<int>(entry.st_mode & 07777) : -1;
}

class PrivateFileTest : public QObject {
    Q_OBJECT

private slots:
    void made_isClosedToOthers_andWhatIsThereStays() {
        const mode_t former = umask(0);
        const std::string folder = path("folder");
        const std::string file = path("file");
        QVERIFY(orvelle::makePrivateFolder(folder) && orvelle::makePrivateFile(file));
        umask(former);
        QVERIFY(modeOf(folder) == 0700 && modeOf(file) == 0600);
        chmod(folder.c_str(), 0755);
        chmod(file.c_str(), 0640);
        QVERIFY(orvelle::makePrivateFolder(folder) && orvelle::makePrivateFile(file));
        QVERIFY(modeOf(folder) == 0755 && modeOf(file) == 0640);
        QVERIFY(!orvelle::makePrivateFolder(file) && !orvelle::makePrivateFile(file + "/x"));
    }

    void othersRights_goFromFilesAndFoldersOnly() {
        const std::string file = path("open");
        const std::string link = path("link");
        const std::string pipe = path("pipe");
        QVERIFY(orvelle::makePrivateFile(file) && mkfifo(pipe.c_str(), 0600) == 0);
        QVERIFY(symlink(file.c_str(), link.c_str()) == 0);
        for (const auto& [name, mode, expected] :
             {std::tuple{file, 0754, 0700},
              {file, 02666, 02600},
              {pipe, 0644, 0644},
              {m_directory.path().toStdString(), 0755, 0700}}) {
            QVERIFY(chmod(name.c_str(), static_cast<mode_t>(mode)) == 0);
            QVERIFY(orvelle::takeFromOthers(name));
            QCOMPARE(modeOf(name), expected);
        }
        chmod(file.c_str(), 0644);
        QVERIFY(orvelle::takeFromOthers(link) && orvelle::takeFromOthers(path("none")));
        QCOMPARE(modeOf(file), 0644);
    }

    void privacy_isThatOfTheOpenFile() {
        const std::string file = path("secret");
        QVERIFY(orvelle::makePrivateFile(file));
        const int descriptor = open(file.c_str(), O_RDONLY);
        for (const auto& [mode, expected] : {std::pair{0600, FilePrivacy::kPrivate},
                                             {0400, FilePrivacy::kPrivate},
                                             {0640, FilePrivacy::kOpenToOthers},
                                             {0604, FilePrivacy::kOpenToOthers},
                                             {0602, FilePrivacy::kOpenToOthers}}) {
            fchmod(descriptor, static_cast<mode_t>(mode));
            QCOMPARE(orvelle::privacyOf(descriptor), expected);
        }
        fchmod(descriptor, 0600);
        if (fchown(descriptor, 12345, static_cast<gid_t>(-1)) == 0)  // as the administrator only
            QCOMPARE(orvelle::privacyOf(descriptor), FilePrivacy::kOfOthers);
        close(descriptor);
        int ends[2];
        QVERIFY(pipe(ends) == 0);
        QCOMPARE(orvelle::privacyOf(ends[0]), FilePrivacy::kPrivate);
        close(ends[0]);
        close(ends[1]);
    }

    void secretMemory_isNotDumped() {
        const pid_t child = fork();
        if (child == 0) {
            const QByteArray folder = QFile::encodeName(m_directory.path());
            rlimit limit{};
            getrlimit(RLIMIT_CORE, &limit);
            limit.rlim_cur = limit.rlim_max;
            setrlimit(RLIMIT_CORE, &limit);
            orvelle::keepMemorySecret();
            getrlimit(RLIMIT_CORE, &limit);
            std::signal(SIGABRT, SIG_DFL);
            if (chdir(folder.constData()) == 0 && limit.rlim_cur == 0 &&
                prctl(PR_GET_DUMPABLE) == 0)
                raise(SIGABRT);
            _exit(1);
        }
        int status = 0;
        QVERIFY(waitpid(child, &status, 0) == child);
        QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT && !WCOREDUMP(status));
    }

    void stateRoot_isAbsolute() {
        qputenv("XDG_STATE_HOME", "relative");
        QCOMPARE(orvelle::stateRoot(), QDir::homePath() + QStringLiteral("/.local/state"));
        qputenv("XDG_STATE_HOME", "/state");
        QCOMPARE(orvelle::stateRoot(), QStringLiteral("/state"));
        qunsetenv("XDG_STATE_HOME");
    }

private:
    std::string path(const char* name) const {
        return m_directory.filePath(QString::fromLatin1(name)).toStdString();
    }

    const QTemporaryDir m_directory;
};

const orvelle::test::RegisterSuite<PrivateFileTest> kRegistered;

}  // namespace

#include "private_file_test.moc"
