#include "support/data_home.h"

#include <QFile>
#include <QTemporaryDir>

namespace orvelle::test {

struct DataHome::Folder {
    QTemporaryDir directory;
};

DataHome::DataHome() : m_folder(std::make_unique<Folder>()) {
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder->directory.path()));
}

DataHome::~DataHome() = default;

}  // namespace orvelle::test
