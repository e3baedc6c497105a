#include "report.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <cstdio>

namespace orvelle::bench {

void Report::add(const QString& key, double value, const QString& aim) {
    m_rows.push_back({key, std::round(value * 100.0) / 100.0, aim});
}

void Report::print() const {
    for (const Row& row : m_rows)
        std::printf("%-42s %10.2f   %s\n", qPrintable(row.key), row.value, qPrintable(row.aim));
}

bool Report::writeJson(const QString& path) const {
    QJsonObject object;
    for (const Row& row : m_rows)
        object.insert(row.key, row.value);
    QFile file(path);
    const QByteArray json = QJsonDocument(object).toJson();
    return file.open(QIODevice::WriteOnly) && file.write(json) == json.size() && file.flush();
}

}  // namespace orvelle::bench
