// A song's loops in a file of their own, so that they move to another machine: a small JSON file that knows the song by its
// sound, whatever the song's own file is called and however it is encoded or tagged.
// Threads: values and pure functions.
#pragma once

#include "AppCore/Practice.h"

#include <cstdint>
#include <expected>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

/// What a song sounds like, coarsely: its length, and how loud it is from part to part.
struct SongFingerprint {
    static constexpr std::size_t levelCount = 256;

    double seconds = 0;
    /// `levelCount` of them, 255 being the loudest part; or none.
    std::vector<std::uint8_t> levels = {};

    bool operator==(const SongFingerprint&) const = default;
};

/// `peaks`: how loud the song is from part to part, 0 to 1, as its waveform has them.
[[nodiscard]] SongFingerprint fingerprintOf(std::span<const float> peaks, double seconds);
/// Whether both are of one recording: another encoding of it, with a little more or less silence, is.
[[nodiscard]] bool areOfOneSong(const SongFingerprint& one, const SongFingerprint& other);

struct LoopFile {
    /// Of what is read; larger files are none of loops.
    static constexpr std::size_t maxBytes = 4U << 20;

    /// The song's file, for the user.
    std::string songName;
    SongFingerprint song;
    std::vector<NamedLoop> loops;
};

enum class LoopFileError { isNoLoopFile, isNewer };

[[nodiscard]] std::string encodeLoopFile(const LoopFile& file);
/// The first `Practice::maxLoops`; members that are missing or wrong are as by default, loops that are no loops left out.
[[nodiscard]] std::expected<LoopFile, LoopFileError> decodeLoopFile(std::string_view json);

/// The loops of a song after others were added to them.
struct LoopMerge {
    std::vector<NamedLoop> loops;
    std::size_t added = 0;
    /// Of the others: those that were there already, that begin beyond the song's end, and that are too many.
    std::size_t alreadyThere = 0;
    std::size_t beyondEnd = 0;
    std::size_t tooMany = 0;
};

/// `seconds`: the song's length; loops that reach beyond it end there.
[[nodiscard]] LoopMerge mergeLoops(std::vector<NamedLoop> present, const std::vector<NamedLoop>& others, double seconds);

}  // namespace quillet
