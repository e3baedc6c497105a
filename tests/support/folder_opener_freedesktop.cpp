#include "support/folder_opener.h"

#include <QTemporaryDir>
#include <QtTest>

namespace orvelle::test {

struct FolderOpener::Script {
    const QTemporaryDir home;
    const QByteArray path = qgetenv("PATH");
};

FolderOpener::FolderOpener() : m_script(std::make_unique<Script>()) {
    QFile script(m_script->home.filePath(QStringLiteral("xdg-open")));
    if (!script.open(QIODevice::WriteOnly))
        qFatal("no script can be written");
    script.write("#!/bin/sh\ncd \"${0%/*}\" && printf %s \"$1\" >tmp && mv tmp out\n");
    script.close();
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("PATH", QFile::encodeName(m_script->home.path()) + ":/usr/bin:/bin");
}

FolderOpener::~FolderOpener() {
    qputenv("PATH", m_script->path);
}

bool FolderOpener::isPossible() {
    return true;
}

QString FolderOpener::takeOpened() {
    constexpr int kTimeoutMs = 20'000;
    QFile out(m_script->home.filePath(QStringLiteral("out")));
    const bool isThere =
        QTest::qWaitFor([&] { return out.exists(); }, kTimeoutMs) && out.open(QIODevice::ReadOnly);
    const QString folder = isThere ? QString::fromUtf8(out.readAll()) : QString();
    out.remove();
    return folder;
}

}  // namespace orvelle::test
