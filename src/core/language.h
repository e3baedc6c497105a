#pragma once

#include <QMap>
#include <QObject>
#include <QString>

/// The texts of the current language, looked up by key. Process-wide; loaded on the interface
/// thread before the main window is built, looked up from any thread.
///
/// A file "<name>.lg" is UTF-8 with one `key = "text";` a line; blanks around the "=", quotes and
/// ";" may be missing. It ends at its first empty line. A line without exactly one "=" or that is
/// not UTF-8 is skipped; a later line with the same key wins.
class KvLanguage : public QObject {
    Q_OBJECT

public:
    using Table = QMap<QString, QString>;

    static void setRoot(const QString& root);
    /// Makes `language` the current one; a missing file leaves an empty table.
    static void load(const QString& language);
    /// Empties `table`, then reads "<root>/<name>.lg" into it; `name` may carry the ending.
    static bool load(const QString& name, Table& table);

    static QString getLanguage();
    /// The key itself where the table has no such key.
    static QString getString(const QString& key);
};
