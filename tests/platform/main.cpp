#include <cstdio>

#include "child.h"
#include "platform/single_instance.h"
#include "support/suites.h"

int main(int argc, char** argv) {
    // "--hold NAME" makes the program the other copy: it says whether it got the lock and waits.
    if (argc == 3 && qstrcmp(argv[1], "--hold") == 0) {
        orvelle::SingleInstance instance(argv[2]);
        std::puts(instance.acquire() ? "held" : "refused");
        std::fflush(stdout);
        return std::getchar();
    }
    if (const auto code = orvelle::test::runAsChild(argc, argv))
        return *code;
    QCoreApplication app(argc, argv);
    return orvelle::test::runSuites(argc, argv);
}
