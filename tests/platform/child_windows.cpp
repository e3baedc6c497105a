#include "child.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <cstdlib>

#include "platform/crash_dump.h"

namespace orvelle::test {

namespace {

// Written under another name first: whoever waits for it finds it whole.
int tellOwnName(const QString& path) {
    QFile file(path + QStringLiteral(".part"));
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    file.write(QFileInfo(QCoreApplication::applicationFilePath()).fileName().toUtf8());
    file.close();
    return file.rename(path) ? 0 : 1;
}

int crash(const QString& how, const QString& dump) {
    writeCrashDumpTo(dump.toStdString());
    if (how == QLatin1String("abort"))
        std::abort();
    int* volatile nowhere = nullptr;
    return *nowhere;
}

}  // namespace

std::optional<int> runAsChild(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QString told = qEnvironmentVariable("ORVELLE_TEST_TELL");
    const QStringList arguments = QCoreApplication::arguments();
    if (!told.isEmpty())
        return tellOwnName(told);
    if (arguments.value(1) == QLatin1String("--crash"))
        return crash(arguments.value(2), arguments.value(3));
    return std::nullopt;
}

}  // namespace orvelle::test
