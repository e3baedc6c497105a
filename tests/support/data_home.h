#pragma once

#include <memory>

namespace orvelle::test {

/// The folder of this process's data is a test's own while it lives, and empty at first. Made
/// before the application object of a program that keeps its name.
class DataHome {
public:
    DataHome();
    ~DataHome();
    DataHome(const DataHome&) = delete;
    DataHome& operator=(const DataHome&) = delete;

private:
    struct Folder;

    std::unique_ptr<Folder> m_folder;
};

}  // namespace orvelle::test
