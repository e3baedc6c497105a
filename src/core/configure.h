#pragma once

#include <QObject>
#include <QSettings>
#include <QString>

namespace orvelle {

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
/// threads; a set value is in the file when the call returns.
class KvConfigure : public QObject {
    Q_OBJECT

public:
    explicit KvConfigure(QObject* parent = nullptr);

    void setInt(const QString& key, int value);
    /// `defaultValue` also where the value is no number.
    int getInt(const QString& key, int defaultValue) const;
    void setString(const QString& key, const QString& value);
    QString getString(const QString& key, const QString& defaultValue) const;
    void setBool(const QString& key, bool value);
    bool getBool(const QString& key, bool defaultValue) const;

    /// Whether the key was present.
    bool remove(const QString& key);
    /// Whether the key has a value that is not null.
    bool contains(const QString& key) const;

private:
    void store(const QString& key, const QVariant& value);

    QSettings m_settings;
};
