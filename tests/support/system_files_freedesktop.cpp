#include "support/system_files.h"

#include <QFile>

#include <sys/stat.h>

namespace orvelle::test {

QByteArray programThatMakes(const QString& proof, int padding) {
    return "#!/bin/sh\ntouch '" + proof.toUtf8() + "'\nexit\n" + QByteArray(padding, '#');
}

bool isRunnableByMark() {
    return true;
}

bool makePipe(const QString& path) {
    return mkfifo(QFile::encodeName(path).data(), 0700) == 0;
}

}  // namespace orvelle::test
