#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

#include "core/configure.h"
#include "core/language.h"
#include "core/log.h"
#include "media/live/device_inputs.h"
#include "media/media_log.h"
#include "platform/heap.h"
#include "render/drawing.h"
#include "sections.h"
#include "ui/widgets/focus_ring.h"
#include "workbench.h"

namespace orvelle::bench {

namespace {

struct Section {
    const char* name;
    bool (*measure)(Workbench& bench);
    bool isUsual = true;  ///< measured unless others are wanted
};
constexpr Section kSections[] = {
    {"startup", measureStartUp},   {"list", measureList},          {"connect", measureConnecting},
    {"engine", measureEngine},     {"fullhd", measureFullHd},      {"grid", measureGrid},
    {"delay", measureDelay},       {"record", measureRecording},   {"playback", measurePlayback},
    {"latency", measureLatency},   {"storm", measureStorm, false}, {"peers", measurePeers, false},
    {"download", measureDownload},
};

QStringList sectionNames() {
    QStringList names;
    for (const Section& section : kSections)
        names << QLatin1String(section.name);
    return names;
}

QStringList usualSections() {
    QStringList names;
    for (const Section& section : kSections) {
        if (section.isUsual)
            names << QLatin1String(section.name);
    }
    return names;
}

/// All that are wanted, one after the other; says which one failed.
bool measure(const QStringList& wanted, Workbench& bench) {
    bool complete = true;
    for (const Section& section : kSections) {
        if (!wanted.contains(QLatin1String(section.name)))
            continue;
        const bool done = section.measure(bench);
        std::fprintf(stderr, "%s: %s\n", section.name, done ? "done" : "FAILED");
        complete = complete && done;
    }
    return complete;
}

/// What the client's own start does for its windows.
void prepareClient() {
    QCoreApplication::setApplicationName(QStringLiteral("Orvelle"));
    QCoreApplication::setApplicationVersion(QStringLiteral("bench"));
    QApplication::setQuitOnLastWindowClosed(false);
    KvLanguage::setRoot(QCoreApplication::applicationDirPath() + QStringLiteral("/language"));
    KvLanguage::load(QStringLiteral("english"));
    // The guide of a first start would lie over the grid.
    KvConfigure().setBool(QCoreApplication::applicationVersion(), false);
    FocusRing::install();
    silenceFfmpeg();
    registerDeviceInputs();
}

int run(const QApplication& application) {
    const QString names = sectionNames().join(QLatin1Char(','));
    const QCommandLineOption json(QStringLiteral("json"),
                                  QStringLiteral("Also write the figures as JSON."),
                                  QStringLiteral("file"));
    const QCommandLineOption only(
        QStringLiteral("only"), QStringLiteral("Measure only these of ") + names,
        QStringLiteral("sections"), usualSections().join(QLatin1Char(',')));
    QCommandLineParser parser;
    parser.addOptions({json, only});
    parser.addHelpOption();
    parser.process(application);
    const QStringList wanted = parser.value(only).split(QLatin1Char(','));
    for (const QString& name : wanted) {
        if (sectionNames().contains(name))
            continue;
        std::fprintf(stderr, "no such section: %s\n", qPrintable(name));
        return 2;
    }
    prepareClient();
    Workbench bench;
    const bool complete = measure(wanted, bench);
    bench.report().print();
    const bool written = !parser.isSet(json) || bench.report().writeJson(parser.value(json));
    return complete && written ? 0 : 1;
}

}  // namespace

}  // namespace orvelle::bench

int main(int argc, char** argv) {
    orvelle::keepHeapSmall();
    const QTemporaryDir data;
    qputenv("XDG_DATA_HOME", QFile::encodeName(data.path()));
    qputenv("ORVELLE_LINK_LOOPBACK_ONLY", "1");
    qputenv("ORVELLE_DISCOVERY_PORT", "47821");
    orvelle::setDebugLines(false);
    // As the client itself does.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    orvelle::spareOpenGl();
    const QApplication application(argc, argv);
    Q_INIT_RESOURCE(orvelle);
    return orvelle::bench::run(application);
}
