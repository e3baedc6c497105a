#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class QDomElement;

namespace orvelle {

/// What is kept of an entry of the camera list: the contents of its file. A plain value.
struct GroupRecord {
    static constexpr int kSingleCamera = 0;
    static constexpr int kGroup = 1;
    static constexpr int kMaxMembers = 16;

    int groupId = -1;
    int type = kSingleCamera;
    int layout = 0;
    QString name;
    QStringList uids;
    int groupIndex = -1;

    /// What its file and a group's picture are named after: a group's id, a camera entry's UID;
    /// empty when it has none.
    QString key() const;

    QByteArray toXml() const;
    /// Takes what the file holds, the rest stays; false when it is not usable, with a line in the
    /// log that says why.
    bool read(const QString& path);

private:
    void readElement(const QDomElement& element);
    const char* refusal() const;
};

}  // namespace orvelle
