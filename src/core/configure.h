#pragma once

#include <QObject>
#include <QSettings>
#include <QString>

namespace orvelle {

class FileWriter;

/// The keys of the settings file. The program's version is one more key, read by the guide view.
namespace settings {
inline constexpr QLatin1String kLanguage("language");
inline constexpr QLatin1String kMediaRoot("KvMediaRoot");
inline constexpr QLatin1String kTimeLineLevel("KvVideoTimeLineViewLevel");
inline constexpr QLatin1String kDeviceMaxId("device_max_id");
inline constexpr QLatin1String kGroupMaxId("group_max_id");
}  // namespace settings

}  // namespace orvelle

/// The settings file "configure.ini". Built on the stack for each use and never shared between
/// threads.
///
/// Setters wait for no disk while there is a writer: it writes, and tells of what fails. Whoever
/// reads gets the new value at once and while there is a writer, whatever becomes of the file.
class KvConfigure : public QObject {
    Q_OBJECT

public:
    explicit KvConfigure(QObject* parent = nullptr);

    /// Who writes from now on, on a thread of its own; borrowed. Null, as at first: the setters,
    /// before they return. Waits until a former one has written all. Any thread.
    static void setWriter(orvelle::FileWriter* writer);

    // True when the value is in the file or waits to be written to it.
    bool setInt(const QString& key, int value);
    /// `defaultValue` also where the value is no number.
    int getInt(const QString& key, int defaultValue) const;
    bool setString(const QString& key, const QString& value);
    QString getString(const QString& key, const QString& defaultValue) const;
    bool setBool(const QString& key, bool value);
    bool getBool(const QString& key, bool defaultValue) const;

    /// Whether the key was present; it is gone, or will be as a value is set.
    bool remove(const QString& key);
    /// Whether the key has a value that is not null.
    bool contains(const QString& key) const;

private:
    QVariant value(const QString& key) const;
    bool store(const QString& key, const QVariant& value);

    QSettings m_settings;
};
