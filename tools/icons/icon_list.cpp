#include "icons/icon_list.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>

namespace orvelle::icons {
namespace {

// The program's names for the states differ from button to button; the tints do not.
QString tintOf(const QString& state) {
    if (state.isEmpty())
        return QStringLiteral("normal");
    if (state == QLatin1String("pressed"))
        return QStringLiteral("press");
    if (state == QLatin1String("over"))
        return QStringLiteral("hover");
    return state;
}

QSize sizeOf(const QJsonValue& value, QSize fallback) {
    const QJsonArray sides = value.toArray();
    return sides.size() == 2 ? QSize(sides[0].toInt(), sides[1].toInt()) : fallback;
}

Icon makeIcon(const QJsonObject& entry, const QJsonObject& ground, const QString& state) {
    const QString name = entry[QLatin1String("name")].toString();
    const QSize size = sizeOf(entry[QLatin1String("size")], QSize(24, 24));
    const QJsonArray tint = ground[tintOf(state)].toArray();
    Icon icon;
    icon.name = state.isEmpty() ? name : name + QLatin1Char('_') + state;
    icon.source = entry[QLatin1String("svg")].toString(name) + QLatin1String(".svg");
    icon.size = size;
    icon.glyph = sizeOf(entry[QLatin1String("glyph")], size);
    icon.ink = QColor(tint.at(0).toString());
    icon.chip = tint.size() > 1 ? QColor(tint.at(1).toString()) : QColor();
    icon.chipRadius = ground[QLatin1String("radius")].toDouble();
    icon.ground = QColor(ground[QLatin1String("colour")].toString());
    icon.groundName = entry[QLatin1String("on")].toString();
    icon.language = entry[QLatin1String("language")].toString();
    icon.stroke = entry[QLatin1String("stroke")].toDouble();
    icon.turns = entry[QLatin1String("turns")].toInt();
    return icon;
}

// Empty when the entry is sound, else what is wrong with it.
QString faultOf(const Icon& icon) {
    if (!icon.ground.isValid())
        return QStringLiteral("unknown ground \"%1\"").arg(icon.groundName);
    if (!icon.ink.isValid())
        return QStringLiteral("no such tint on \"%1\"").arg(icon.groundName);
    if (icon.size.isEmpty() || icon.glyph.isEmpty())
        return QStringLiteral("bad size");
    return {};
}

std::optional<std::vector<Icon>> refuse(const QString& path, const QString& fault) {
    std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(fault));
    return std::nullopt;
}

}  // namespace

std::optional<std::vector<Icon>> readIconList(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refuse(path, file.errorString());
    QJsonParseError error;
    const QJsonObject root = QJsonDocument::fromJson(file.readAll(), &error).object();
    if (error.error != QJsonParseError::NoError)
        return refuse(path, error.errorString());

    std::vector<Icon> icons;
    const QJsonObject grounds = root[QLatin1String("grounds")].toObject();
    for (const QJsonValue& value : root[QLatin1String("icons")].toArray()) {
        const QJsonObject entry = value.toObject();
        const QJsonObject ground = grounds[entry[QLatin1String("on")].toString()].toObject();
        QJsonArray states = entry[QLatin1String("states")].toArray();
        if (states.isEmpty())
            states.append(QString());
        for (const QJsonValue& state : qAsConst(states)) {
            icons.push_back(makeIcon(entry, ground, state.toString()));
            if (const QString fault = faultOf(icons.back()); !fault.isEmpty())
                return refuse(path, icons.back().name + QLatin1String(": ") + fault);
        }
    }
    return icons;
}

}  // namespace orvelle::icons
