// The folder that holds the separated stems of one song, and whether they are its own: a song may change after it was
// separated.
// Threads: callable from every thread that may wait for a disk.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/files/FileAttributes.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quillet {

class StemFolder {
public:
    using Stems = std::map<std::string, FilePath>;

    /// The folder of `song` in `stemsDirectory`. Nothing is looked at before a member function is called.
    StemFolder(const FilePath& stemsDirectory, FilePath song);

    /// The one in which a stem of `song` lies, wherever stems were kept when it was made.
    [[nodiscard]] static StemFolder containing(const FilePath& stem, FilePath song);

    /// Those of all songs in `stemsDirectory`. Their songs are not known.
    [[nodiscard]] static std::vector<StemFolder> all(const FilePath& stemsDirectory);

    /// Twelve hexadecimal digits for the song's path: the first six bytes of its SHA-256.
    [[nodiscard]] static std::string pathHash(const FilePath& song);

    /// Where a separation writes.
    [[nodiscard]] const FilePath& path() const { return m_path; }

    /// The files of all six stems; nothing unless each is there.
    [[nodiscard]] std::optional<Stems> detectCachedStems() const;
    /// Whether the song has another size or time than when its stems were made. What was not recorded has not changed.
    [[nodiscard]] bool isOutdated(const FileAttributesReader& attributes) const;
    /// Keeps the song's size and time as they were, beside the stems. Without effect where the disk refuses.
    void recordSong(const FileAttributes& song) const;
    /// Of what separations have written.
    [[nodiscard]] std::int64_t bytes() const;
    /// Deletes that, and the folder where nothing else is in it.
    void remove() const;

private:
    StemFolder() = default;

    [[nodiscard]] std::vector<FilePath> ownEntries() const;

    FilePath m_song;
    FilePath m_path;
};

}  // namespace quillet
