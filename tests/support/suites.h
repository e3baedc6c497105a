#pragma once

#include <QtTest>

#include <memory>
#include <vector>

#include "support/leak_check.h"

namespace orvelle::test {

using MakeSuite = std::unique_ptr<QObject> (*)();

inline std::vector<MakeSuite>& suites() {
    static std::vector<MakeSuite> all;
    return all;
}

/// One static object of this in a test file puts its class among those that runSuites() runs.
template <class Suite>
struct RegisterSuite {
    RegisterSuite() {
        suites().push_back([]() -> std::unique_ptr<QObject> { return std::make_unique<Suite>(); });
    }
};

/// Runs all classes, or the one that the first argument names, then the leak check; the result is
/// the program's exit code.
inline int runSuites(int argc, char** argv) {
    // A port of its own, below those that the system gives out: cameras of two runs at once have
    // the same names.
    qputenv("ORVELLE_DISCOVERY_PORT",
            QByteArray::number(20000 + QCoreApplication::applicationPid() % 10000));
    // The toolkit takes the pattern of log lines apart at the first one, under a lock that the
    // thread sanitizer cannot see; here there is one thread only.
    qFormatLogMessage(QtDebugMsg, {}, {});
    const LeakCheck leaks;
    int failed = 0;
    const char* const wanted = argc > 1 ? argv[1] : "";
    for (const MakeSuite make : suites()) {
        const std::unique_ptr<QObject> suite = make();
        if (qstrcmp(suite->metaObject()->className(), wanted) == 0)
            return QTest::qExec(suite.get(), argc - 1, argv + 1) + leaks.leftovers();
    }
    for (const MakeSuite make : suites())
        failed += QTest::qExec(make().get(), argc, argv);
    return failed + leaks.leftovers();
}

}  // namespace orvelle::test
