#pragma once

#include <QFile>
#include <QString>

#include <cstdint>
#include <vector>

namespace orvelle {

/// Makes an ordinary file of a recording in fragments, in place: only tables are written.
///
///     type | movie | fragment ... fragment          as recorded, or as a crash left it
///     type | movie | fragment ... fragment | movie' the tables of all samples, synced
///     type | data ------------------------ | movie' one header of 16 bytes rewritten, synced
///
/// A player that meets two movies takes the first, so that each of these is playable, whenever the
/// program ends. Nobody else writes the file. Waits for the disk.
class FragmentFinisher {
public:
    enum class Outcome {
        kFinished,
        kNotInFragments,  ///< left as it is: an ordinary file already, or none that can be read
        kNoPicture,       ///< nothing in it could be shown
        kNoRoom,          ///< stays in fragments
        kNotKept,         ///< the disk has lost what was written before
    };

    explicit FragmentFinisher(const QString& path) : m_file(path) {}
    Outcome finish();
    /// Whether finish() has something to do; reads a few bytes.
    static bool isInFragments(const QString& path);

private:
    bool readMovie();
    bool dropTornTable();
    Outcome append(const std::vector<uint8_t>& movie, uint64_t end);
    bool putAt(uint64_t offset, const std::vector<uint8_t>& bytes);

    QFile m_file;
    std::vector<uint8_t> m_movie;  ///< the box before the fragments
    uint64_t m_movieOffset = 0;
    bool m_hasFragment = false;  ///< a whole table of one
};

}  // namespace orvelle
