#include "device/camera_record.h"

#include <QDebug>

#include <algorithm>
#include <array>
#include <cmath>

#include "core/wipe.h"
#include "device/xml_file.h"
#include "link/device_code.h"
#include "link/limits.h"

namespace orvelle {

namespace {

bool isAsciiLetterOrDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z');
}

double toVolume(const QString& text) {
    const double volume = text.toDouble();
    return std::isfinite(volume) ? volume : 0.0;
}

}  // namespace

bool isValidUid(const char* text, int size) {
    return std::all_of(text, text + size, isAsciiLetterOrDigit);
}

bool isUsableUid(const QString& uid) {
    const QByteArray text = uid.toUtf8();
    return !text.isEmpty() && text.size() <= kMaxUidLength &&
           isValidUid(text.constData(), text.size());
}

CameraRecord CameraRecord::fromDeviceCode(const QString& code) {
    CameraRecord record;
    std::array<char, 1024> uidText{};
    std::array<char, 1024> passwordText{};
    if (GetDeUIDPasswd(code.toUtf8().constData(), uidText.data(), passwordText.data()) == 0) {
        const auto size = static_cast<int>(qstrnlen(uidText.data(), uidText.size()));
        if (isValidUid(uidText.data(), size))
            record.uid = QString::fromLatin1(uidText.data(), size);
        record.password = QString::fromUtf8(passwordText.data());
    }
    wipe(passwordText.data(), passwordText.size());
    qDebug() << "uid = " << record.uid
             << ", password = " << (record.password.isEmpty() ? "" : "***");
    return record;
}

QByteArray CameraRecord::toXml() const {
    return xmlDocument([this](QXmlStreamWriter& writer) {
        writer.writeStartElement(QStringLiteral("KvTUTKDevice"));
        writeXmlNumber(writer, QStringLiteral("deviceId"), deviceId);
        writeXmlText(writer, QStringLiteral("name"), name);
        writeXmlText(writer, QStringLiteral("ip"), ip);
        writeXmlText(writer, QStringLiteral("uid"), uid);
        writeXmlText(writer, QStringLiteral("password"), password);
        writeXmlNumber(writer, QStringLiteral("port"), port);
        writeXmlNumber(writer, QStringLiteral("mode"), mode);
        writeXmlText(writer, QStringLiteral("volume"), QStringLiteral("%1").arg(volume));
        writer.writeEndElement();
    });
}

bool CameraRecord::read(const QString& path) {
    const auto document = readXmlFile(path, QStringLiteral("KvTUTKDevice"));
    if (!document)
        return false;
    for (QDomElement element = document->documentElement().firstChildElement(); !element.isNull();
         element = element.nextSiblingElement())
        readField(element.tagName(), element.text());
    return true;
}

void CameraRecord::readField(const QString& tag, const QString& text) {
    if (tag == QLatin1String("name"))
        name = text;
    else if (tag == QLatin1String("ip"))
        ip = text;
    else if (tag == QLatin1String("uid"))
        uid = text;
    else if (tag == QLatin1String("password"))
        password = text;
    else if (tag == QLatin1String("port"))
        port = text.toInt();
    else if (tag == QLatin1String("mode"))
        mode = text.toInt();
    else if (tag == QLatin1String("deviceId"))
        deviceId = text.toInt();
    else if (tag == QLatin1String("volume"))
        volume = toVolume(text);
}

}  // namespace orvelle
