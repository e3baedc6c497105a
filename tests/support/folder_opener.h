#pragma once

#include <QString>

#include <memory>

namespace orvelle::test {

/// Stands in for what shows a folder to the user while it lives, and writes down which.
class FolderOpener {
public:
    FolderOpener();
    ~FolderOpener();
    FolderOpener(const FolderOpener&) = delete;
    FolderOpener& operator=(const FolderOpener&) = delete;

    /// False where the system itself shows folders; a test skips then.
    static bool isPossible();
    /// The folder that was asked for since the last call; waits for it.
    QString takeOpened();

private:
    struct Script;

    std::unique_ptr<Script> m_script;
};

}  // namespace orvelle::test
