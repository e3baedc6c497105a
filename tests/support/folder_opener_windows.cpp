#include "support/folder_opener.h"

namespace orvelle::test {

struct FolderOpener::Script {};

FolderOpener::FolderOpener() = default;

FolderOpener::~FolderOpener() = default;

bool FolderOpener::isPossible() {
    return false;
}

QString FolderOpener::takeOpened() {
    return QString();
}

}  // namespace orvelle::test
