#include "media/recording/fragment_finisher.h"

#include "core/file_utils.h"
#include "media/recording/box_reader.h"
#include "media/recording/box_writer.h"
#include "media/recording/recorded_samples.h"
#include "media/recording/recording_movie.h"

namespace orvelle {

namespace {

constexpr int kHeaderBytes = 8;
/// A movie box without samples needs some two kilobytes.
constexpr uint32_t kMaxMovieBytes = 1024 * 1024;

struct BoxHeader {
    uint32_t size = 0;
    uint32_t type = 0;
};

BoxHeader readHeader(QFile& file, uint64_t offset) {
    uint8_t bytes[kHeaderBytes] = {};
    if (!file.seek(static_cast<qint64>(offset)) ||
        file.read(reinterpret_cast<char*>(bytes), kHeaderBytes) != kHeaderBytes)
        return {};
    BoxReader reader(bytes, kHeaderBytes);
    BoxHeader header;
    header.size = reader.u32();
    header.type = reader.u32();
    return header;
}

}  // namespace

FragmentFinisher::Outcome FragmentFinisher::finish() {
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered) ||
        !readMovie() || !dropTornTable())
        return Outcome::kNotInFragments;
    if (!m_hasFragment)
        return Outcome::kNoPicture;
    const RecordedSamples samples = readSamples(m_file.fileName());
    if (samples.tracks.empty())
        return Outcome::kNotInFragments;
    if (!samples.hasPicture)
        return Outcome::kNoPicture;
    const std::vector<uint8_t> movie =
        finishedMovie({m_movie.data(), m_movie.size()}, samples.tracks);
    return movie.empty() ? Outcome::kNoPicture : append(movie, samples.endBytes);
}

bool FragmentFinisher::isInFragments(const QString& path) {
    FragmentFinisher looking(path);
    return looking.m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && looking.readMovie();
}

/// The movie follows the file's type, and fragments or nothing follow it.
bool FragmentFinisher::readMovie() {
    const BoxHeader type = readHeader(m_file, 0);
    const BoxHeader movie = readHeader(m_file, type.size);
    if (type.type != boxType("ftyp") || movie.type != boxType("moov") ||
        movie.size < kHeaderBytes || movie.size > kMaxMovieBytes)
        return false;
    const uint64_t end = uint64_t{type.size} + movie.size;
    const BoxHeader next = readHeader(m_file, end);
    if (next.type != boxType("moof") && next.type != 0)
        return false;
    m_movieOffset = type.size;
    m_movie.resize(movie.size);
    return m_file.seek(static_cast<qint64>(m_movieOffset)) &&
           m_file.read(reinterpret_cast<char*>(m_movie.data()), movie.size) == movie.size;
}

/// Nothing reads a file that ends within the table of a fragment, nor one that ends within the
/// tables that were being appended.
bool FragmentFinisher::dropTornTable() {
    const auto fileBytes = static_cast<uint64_t>(m_file.size());
    uint64_t at = m_movieOffset + m_movie.size();
    while (at < fileBytes) {
        const BoxHeader box = readHeader(m_file, at);
        const bool isWhole = box.size >= kHeaderBytes && box.size <= fileBytes - at;
        const bool isTable = box.type == boxType("moof") || box.type == boxType("moov");
        if (!isWhole)
            return !isTable || m_file.resize(static_cast<qint64>(at));
        m_hasFragment = m_hasFragment || box.type == boxType("moof");
        at += box.size;
    }
    return true;
}

FragmentFinisher::Outcome FragmentFinisher::append(const std::vector<uint8_t>& movie,
                                                   uint64_t end) {
    const QString path = m_file.fileName();
    // What is torn at the end would keep some players from opening the file.
    if (!m_file.resize(static_cast<qint64>(end)) || !putAt(end, movie)) {
        m_file.resize(static_cast<qint64>(end));
        return Outcome::kNoRoom;
    }
    // What was written before may have failed on its way to the disk.
    if (!KvFileUtils::syncFile(path)) {
        m_file.resize(static_cast<qint64>(end));
        return Outcome::kNotKept;
    }
    BoxWriter header;
    header.u32(1);  // the size follows the type
    header.u32(boxType("mdat"));
    header.u64(end - m_movieOffset);
    // With or without it the file plays, from here on only with the tables at its end.
    putAt(m_movieOffset, header.written());
    KvFileUtils::syncFile(path);
    return Outcome::kFinished;
}

bool FragmentFinisher::putAt(uint64_t offset, const std::vector<uint8_t>& bytes) {
    const auto size = static_cast<qint64>(bytes.size());
    return m_file.seek(static_cast<qint64>(offset)) &&
           m_file.write(reinterpret_cast<const char*>(bytes.data()), size) == size;
}

}  // namespace orvelle
