#include "support/system_files.h"

#include <QCoreApplication>
#include <QFile>

namespace orvelle::test {

// What follows a program in its file is no concern of the system; see proof_maker_windows.cpp.
QByteArray programThatMakes(const QString& proof, int padding) {
    QFile maker(QCoreApplication::applicationDirPath() + QStringLiteral("/proof-maker.exe"));
    if (!maker.open(QIODevice::ReadOnly))
        qFatal("there is no proof-maker.exe beside the test");
    return maker.readAll() + QByteArray(padding, '#') + '\n' + proof.toUtf8();
}

bool isRunnableByMark() {
    return false;
}

bool makePipe(const QString&) {
    return false;
}

}  // namespace orvelle::test
