// Bakes the drawings of resources/icons into the images of the program, at build time.

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>

#include "icons/contact_sheet.h"
#include "icons/gif_writer.h"
#include "icons/ico_writer.h"
#include "icons/icon_list.h"
#include "icons/icon_painter.h"

using namespace orvelle::icons;

namespace {

constexpr int kTurnMs = 1000;

QString fileName(const Icon& icon, int scale) {
    return icon.name + QLatin1String(scale == 1 ? "" : "@2x") +
           QLatin1String(icon.turns > 0 ? ".gif" : ".png");
}

bool bake(IconPainter* painter, const Icon& icon, int scale, const QString& path) {
    if (icon.turns == 0)
        return painter->paint(icon, scale).save(path, "PNG");
    std::vector<QImage> frames;
    for (int i = 0; i < icon.turns; ++i) {
        frames.push_back(painter->paint(icon, scale, 360.0 * i / icon.turns));
        if (frames.back().isNull())
            return false;
    }
    return writeGreyGif(path, frames, kTurnMs / icon.turns, icon.ground);
}

bool write(const QString& path, const QByteArray& text) {
    QFile file(path);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    if (!written)
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(file.errorString()));
    return written;
}

// The images and the collection that names them, written last: it is what the build waits for.
bool bakeAll(IconPainter* painter, const std::vector<Icon>& icons, const QString& collection) {
    const QDir directory = QFileInfo(collection).dir();
    QByteArray entries;
    for (const Icon& icon : icons) {
        for (const int scale : {1, 2}) {
            const QString name = fileName(icon, scale);
            if (!bake(painter, icon, scale, directory.filePath(name))) {
                std::fprintf(stderr, "%s: not baked\n", qPrintable(name));
                return false;
            }
            entries += "    <file>" + name.toUtf8() + "</file>\n";
        }
    }
    return write(collection, "<RCC>\n  <qresource prefix=\"/resources\">\n" + entries +
                                 "  </qresource>\n</RCC>\n");
}

bool writeDependencies(const QString& path, const QString& target, const QStringList& files) {
    QByteArray rule = QFile::encodeName(target) + ':';
    for (QString file : files)
        rule += " \\\n  " + QFile::encodeName(file.replace(QLatin1Char(' '), QLatin1String("\\ ")));
    return write(path, rule + '\n');
}

bool saveSheet(IconPainter* painter, const std::vector<Icon>& icons, const QString& path,
               int scale) {
    std::vector<Specimen> specimens;
    for (const Icon& icon : icons)
        specimens.push_back({icon, painter->paint(icon, scale)});
    return paintContactSheet(specimens, scale).save(path, "PNG");
}

// The program's icon in the sizes that Windows shows it in, at 100 to 200 %.
bool bakeProgramIcon(IconPainter* painter, const std::vector<Icon>& icons, const QString& path) {
    const auto found = std::find_if(icons.begin(), icons.end(), [](const Icon& icon) {
        return icon.name == QLatin1String("app_icon");
    });
    if (found == icons.end())
        return false;
    std::vector<QImage> images;
    for (const int side : {16, 20, 24, 32, 40, 48, 64, 96, 256}) {
        Icon icon = *found;
        icon.size = icon.glyph = QSize(side, side);
        images.push_back(painter->paint(icon, 1));
    }
    return writeIco(path, images);
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt's complaint about a missing runtime directory does not belong in a build's output.
    QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false"));
    QGuiApplication app(argc, argv);
    QCommandLineParser arguments;
    arguments.addHelpOption();
    arguments.addPositionalArgument(QStringLiteral("list"),
                                    QStringLiteral("icons.json, beside its drawings"));
    arguments.addOptions({
        {QStringLiteral("qrc"), QStringLiteral("bake into this collection's directory"),
         QStringLiteral("file")},
        {QStringLiteral("depfile"), QStringLiteral("say what was read"), QStringLiteral("file")},
        {QStringLiteral("ico"), QStringLiteral("bake the program's icon for Windows, too"),
         QStringLiteral("file")},
        {QStringLiteral("sheet"), QStringLiteral("picture of all images"), QStringLiteral("file")},
        {QStringLiteral("sheet-scale"), QStringLiteral("pixels a pixel"), QStringLiteral("1|2"),
         QStringLiteral("1")},
    });
    arguments.process(app);
    if (arguments.positionalArguments().size() != 1)
        arguments.showHelp(2);

    const QString list = arguments.positionalArguments().constFirst();
    const auto icons = readIconList(list);
    if (!icons)
        return 1;
    IconPainter painter(QFileInfo(list).path());
    const QString collection = arguments.value(QStringLiteral("qrc"));
    const QString depfile = arguments.value(QStringLiteral("depfile"));
    const QString sheet = arguments.value(QStringLiteral("sheet"));
    const int scale = arguments.value(QStringLiteral("sheet-scale")).toInt();
    bool done = collection.isEmpty() || bakeAll(&painter, *icons, collection);
    const QString ico = arguments.value(QStringLiteral("ico"));
    if (done && !ico.isEmpty())
        done = bakeProgramIcon(&painter, *icons, ico);
    if (done && !depfile.isEmpty())
        done = writeDependencies(depfile, collection, painter.filesRead() << list);
    if (done && !sheet.isEmpty())
        done = saveSheet(&painter, *icons, sheet, scale == 2 ? 2 : 1);
    return done ? 0 : 1;
}
