#pragma once

#include <QByteArray>
#include <QString>

namespace orvelle {

/// What is kept of a camera: the contents of its file, and what a search for cameras shows. A
/// plain value.
struct CameraRecord {
    int deviceId = -1;  ///< a number of this computer, -1 before the first save
    QString name;       ///< may be empty
    QString ip;         ///< as a search found it; only to be shown
    QString uid;        ///< the camera's identity
    QString password;
    int port = 0;   ///< as a search found it
    int mode = -1;  ///< the camera's device type code, -1 when unknown
    double volume = 1.0;

    /// What a person sees: the name or, without one, the UID.
    QString displayName() const { return name.isEmpty() ? uid : name; }

    /// UID and password of the code that the phone shows; both empty when it is not usable.
    static CameraRecord fromDeviceCode(const QString& code);

    QByteArray toXml() const;
    /// Takes what the file holds, the rest stays; false when it is not usable, with a line in the
    /// log that says why.
    bool read(const QString& path);

private:
    void readField(const QString& tag, const QString& text);
};

/// Whether every character is an ASCII letter or digit; true for an empty text.
bool isValidUid(const char* text, int size);
/// Whether a UID can name a camera and its files: valid, not empty and not too long.
bool isUsableUid(const QString& uid);

}  // namespace orvelle
