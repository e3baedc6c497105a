#include "camera/card/card_store.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <filesystem>

#include "camera/camera_log.h"
#include "camera/card/recording_name.h"
#include "camera/card/recording_reader.h"
#include "platform/replace_file.h"

namespace orvelle {

namespace {

constexpr int64_t kDaySec = 86'400;

int64_t availableBytes(const QString& directory) {
    std::error_code error;
    const auto space =
        std::filesystem::space(std::filesystem::u8path(directory.toStdString()), error);
    return error ? 0 : static_cast<int64_t>(space.available);
}

// True too when it was gone already.
bool removeFile(const QString& path) {
    const QFileInfo file(path);
    return QFile::remove(path) || !(file.exists() || file.isSymLink());
}

bool holdsPicture(const QString& path) {
    RecordingReader reader;
    if (!QFileInfo(path).isFile() || !reader.open(path).isEmpty())
        return false;
    auto frame = reader.next();
    while (frame && !(frame->medium == Medium::kVideo && frame->isKey))
        frame = reader.next();
    return frame.has_value();
}

}  // namespace

CardStore::CardStore(QString directory, int64_t quotaBytes)
    : m_directory(std::move(directory)), m_quotaBytes(quotaBytes) {}

bool CardStore::isPresent() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isPresent;
}

bool CardStore::isWritable() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isPresent && m_isWritable;
}

// From day to day, so that a large card takes no longer than a small one.
CardOverview CardStore::overview() const {
    CardOverview card;
    const std::lock_guard<std::mutex> lock(m_mutex);
    card.isPresent = m_isPresent;
    card.isWritable = m_isWritable;
    card.isFull = m_isFull;
    if (m_bytes.empty())
        return card;
    card.oldestSec = m_bytes.begin()->first;
    card.newestSec = m_bytes.rbegin()->first;
    for (auto it = m_bytes.begin(); it != m_bytes.end();) {
        card.daySec.push_back(it->first);
        it = m_bytes.lower_bound((it->first / kDaySec + 1) * kDaySec);
        card.daySec.push_back(std::prev(it)->first);
    }
    return card;
}

CardSpace CardStore::space() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_isPresent ? m_space : CardSpace();
}

std::vector<RecordingRun> CardStore::runs(int64_t fromSec, int64_t toSec) const {
    std::vector<RecordingRun> runs;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (auto it = m_bytes.lower_bound(fromSec); it != m_bytes.end() && it->first <= toSec; ++it) {
        const bool follows =
            !runs.empty() &&
            runs.back().startSec + int64_t{kRecordingSec} * runs.back().minutes == it->first;
        if (follows)
            ++runs.back().minutes;
        else
            runs.push_back({it->first, 1});
    }
    return runs;
}

// Two may overlap after a crash or when the clock was set: the later start goes on.
std::optional<Recording> CardStore::find(int64_t atSec) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_bytes.upper_bound(atSec);
    if (it == m_bytes.begin() || atSec - (--it)->first >= kRecordingSec)
        return {};
    const bool isUnfinished = it->first == m_unfinished;
    const QString name = isUnfinished ? unfinishedName(it->first) : recordingName(it->first);
    return Recording{it->first, pathOf(name), isUnfinished};
}

CardStore::Presence CardStore::refresh() {
    const auto now = folderIdentity(m_directory.toStdString());
    if (!now) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isPresent = false;
            m_bytes.clear();
            m_usedBytes = 0;
            m_unfinished.reset();
        }
        complain(QStringLiteral("is missing"));
        return Presence::kAbsent;
    }
    const bool isNew = !isPresent() || *now != m_identity;
    m_identity = *now;
    const bool isWritable = writableFolderIdentity(m_directory.toStdString()) == now;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isWritable = isWritable;
    }
    if (!isWritable)
        complain(QStringLiteral("cannot be written"));
    if (isNew)
        readDirectory();
    updateSpace();
    return isNew ? Presence::kNew : Presence::kSame;
}

void CardStore::readDirectory() {
    std::map<int64_t, int64_t> bytes;
    std::vector<int64_t> unfinished;
    const QFileInfoList files = QDir(m_directory).entryInfoList(QDir::Files | QDir::System);
    for (const QFileInfo& file : files) {
        // A pipe would hold up whoever opens it.
        if (!file.isFile())
            continue;
        const auto name = readRecordingName(file.fileName());
        if (name && name->isUnfinished)
            unfinished.push_back(name->startSec);
        else if (name)
            bytes[name->startSec] = file.size();
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bytes.swap(bytes);
        m_unfinished.reset();
        m_usedBytes = 0;
        for (const auto& entry : m_bytes)
            m_usedBytes += entry.second;
        m_isPresent = true;
    }
    for (const int64_t startSec : unfinished)
        if (isWritable())
            recover(startSec);
}

void CardStore::begin(int64_t startSec) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bytes.emplace(startSec, 0);
    m_unfinished = startSec;
}

void CardStore::forget(int64_t startSec) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_unfinished != startSec)
        return;
    m_unfinished.reset();
    const auto entry = m_bytes.find(startSec);
    // Unless it was to replace one.
    if (entry != m_bytes.end() && entry->second == 0)
        m_bytes.erase(entry);
}

void CardStore::recover(int64_t startSec) {
    const QByteArray name = unfinishedName(startSec).toUtf8();
    if (keep(startSec))
        qCInfo(lcCamera, "memory card: kept the unfinished %s", name.constData());
    else
        qCWarning(lcCamera, "memory card: removed %s, of which nothing can be played",
                  name.constData());
}

bool CardStore::keep(int64_t startSec) {
    const QString path = unfinishedPath(startSec);
    if (holdsPicture(path) && finish(startSec))
        return true;
    forget(startSec);
    QFile::remove(path);
    return false;
}

bool CardStore::finish(int64_t startSec) {
    const QString from = unfinishedPath(startSec);
    const QString to = pathOf(recordingName(startSec));
    const int64_t bytes = QFileInfo(from).size();
    // Replaces a recording of the same second, which Qt's own renaming would not.
    if (!replaceFile(from.toStdString(), to.toStdString()))
        return false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        int64_t& entry = m_bytes[startSec];
        m_usedBytes += bytes - std::exchange(entry, bytes);
        if (m_unfinished == startSec)
            m_unfinished.reset();
    }
    m_isFaultLogged = false;
    updateSpace();
    return true;
}

void CardStore::fail(int64_t startSec, const QString& reason) {
    complain(reason);
    const bool wasLogged = m_isFaultLogged;
    keep(startSec);
    m_isFaultLogged = wasLogged;
}

// On a disk that others filled nothing is removed unless that can help.
bool CardStore::makeRoom(int64_t bytes) {
    const auto isShort = [this, bytes] {
        const int64_t used = usedBytes();
        return (used > 0 && used + bytes > m_quotaBytes) || availableBytes(m_directory) < bytes;
    };
    bool isPossible = availableBytes(m_directory) + usedBytes() >= bytes;
    while (isPossible && isShort())
        isPossible = removeOldest();
    if (!isPossible)
        complain(QStringLiteral("is full"));
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isFull = !isPossible;
    }
    updateSpace();
    return isPossible;
}

int64_t CardStore::usedBytes() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_usedBytes;
}

bool CardStore::removeOldest() {
    int64_t startSec = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_bytes.empty() || m_bytes.begin()->first == m_unfinished)
            return false;
        startSec = m_bytes.begin()->first;
    }
    if (!removeFile(pathOf(recordingName(startSec))))
        return false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_usedBytes -= m_bytes.begin()->second;
    m_bytes.erase(m_bytes.begin());
    return true;
}

bool CardStore::format() {
    if (refresh() == Presence::kAbsent || !isWritable())
        return false;
    bool isEmpty = true;
    const QStringList names = QDir(m_directory).entryList(QDir::Files | QDir::System);
    for (const QString& name : names)
        isEmpty = (!readRecordingName(name) || removeFile(pathOf(name))) && isEmpty;
    readDirectory();
    updateSpace();
    return isEmpty;
}

void CardStore::updateSpace() {
    const int64_t available = availableBytes(m_directory);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_space.totalBytes = std::min(m_quotaBytes, m_usedBytes + available);
    m_space.freeBytes = std::max<int64_t>(0, m_space.totalBytes - m_usedBytes);
}

void CardStore::complain(const QString& fault) {
    if (m_isFaultLogged)
        return;
    m_isFaultLogged = true;
    qCWarning(lcCamera, "memory card %s %s; nothing is recorded until that changes",
              qPrintable(m_directory), qPrintable(fault));
}

QString CardStore::unfinishedPath(int64_t startSec) const {
    return pathOf(unfinishedName(startSec));
}

QString CardStore::pathOf(const QString& name) const {
    return m_directory + QLatin1Char('/') + name;
}

}  // namespace orvelle
