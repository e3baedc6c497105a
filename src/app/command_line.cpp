#include "app/command_line.h"

#include <QtGlobal>

#include "platform/terminal.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace orvelle {

namespace {

constexpr int kNoDisplay = 1;
constexpr char kUsage[] =
    "Usage: orvelle [--help] [--version] [--log [FILE]]\n"
    "\n"
    "Shows, records and steers Wi-Fi cameras.\n"
    "\n"
    "  -h, --help     show this and end\n"
    "  -v, --version  show the version and end\n"
    "  --log [FILE]   write down what it does, to Orvelle.log among its data or to FILE\n"
    "\n"
    "ORVELLE_LOG=1 in the environment writes it to the terminal.\n"
    "\n"
    "Options of the Qt toolkit, as -platform and -style, are taken as well.\n";

QtMessageHandler s_former = nullptr;

// The toolkit tells in several lines what it tried before it gives up.
bool isAboutDisplays(const QMessageLogContext& context) {
    return context.category && std::strncmp(context.category, "qt.qpa.", 7) == 0;
}

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtFatalMsg) {
        std::fputs("orvelle: there is no display to show its window on\n", stderr);
        std::_Exit(kNoDisplay);
    }
    if (s_former && !isAboutDisplays(context))
        s_former(type, context, text);
}

}  // namespace

std::optional<int> answerCommandLine(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "-h" || argument == "--help") {
            writeToTerminalOfCaller();
            std::fputs(kUsage, stdout);
            return EXIT_SUCCESS;
        }
        if (argument == "-v" || argument == "--version") {
            writeToTerminalOfCaller();
            std::puts("orvelle " ORVELLE_VERSION);
            return EXIT_SUCCESS;
        }
    }
    return std::nullopt;
}

DisplayNeeded::DisplayNeeded() {
    s_former = qInstallMessageHandler(&handleMessage);
}

DisplayNeeded::~DisplayNeeded() {
    qInstallMessageHandler(s_former);
}

}  // namespace orvelle
