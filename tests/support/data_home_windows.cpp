#include "support/data_home.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <windows.h>

namespace orvelle::test {

// The system says where data goes; below that the program's name makes the folder its own.
struct DataHome::Folder {
    Folder() { directory.removeRecursively(); }
    ~Folder() { directory.removeRecursively(); }

    static QString programName() {
        wchar_t path[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, path, MAX_PATH - 1);
        return QFileInfo(QString::fromWCharArray(path)).completeBaseName();
    }

    QDir directory{QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                   QLatin1Char('/') + programName()};
};

DataHome::DataHome() : m_folder(std::make_unique<Folder>()) {}

DataHome::~DataHome() = default;

}  // namespace orvelle::test
