#pragma once

#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QString>
#include <QUrl>

/// What the update file says about the newest build: texts by key. Interface thread.
///
/// The file is XML; each child element of its root is one entry, its tag the key. Keys in use:
/// version, description, description_ch, description_en, name, type, path, sha256.
class KvUpdateInfo : public QObject {
    Q_OBJECT

public:
    explicit KvUpdateInfo(QObject* parent = nullptr);

    /// Takes the entries of an update file in place of all others. False, and none at all, for
    /// what is not XML or holds no entry.
    bool read(const QByteArray& xml);

    void setValue(const QString& value, const QString& key);
    /// Empty where there is no such key.
    QString value(const QString& key) const;

    int versionNumber() const;
    /// Release notes in the current language or, where there are none, those in any language.
    QString notes() const;
    /// Where the installer is; invalid unless an update may come from there.
    QUrl address() const;
    /// The installer's checksum, 32 bytes; empty unless one is given.
    QByteArray sha256() const;

private:
    QMap<QString, QString> m_values;
};
