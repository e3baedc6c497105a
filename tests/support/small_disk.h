#pragma once

#include <QProcess>
#include <QString>

namespace orvelle::test {

/// A disk of its own in an empty folder while it lives, where this user may mount one.
class SmallDisk {
public:
    SmallDisk(const QString& folder, int kib) : m_folder(folder) {
        const QString size = QStringLiteral("size=%1k").arg(kib);
        m_isMounted =
            QProcess::execute(QStringLiteral("mount"),
                              {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
                               size, QStringLiteral("tmpfs"), folder}) == 0;
    }
    ~SmallDisk() {
        if (m_isMounted)
            QProcess::execute(QStringLiteral("umount"), {m_folder});
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted() const { return m_isMounted; }

private:
    const QString m_folder;
    bool m_isMounted = false;
};

}  // namespace orvelle::test
