#pragma once

#include <QString>

namespace orvelle {

/// Folders of files that come with the program: beside it where it was built or unpacked, under
/// the share folder where it was installed. An application object must exist.
QString languageFolder();
QString manualFolder();

}  // namespace orvelle
