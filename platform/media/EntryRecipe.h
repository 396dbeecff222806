// How a stream of each encoding has to be entered so that what follows equals a decode from the start: how much has to be
// decoded before the wanted frame, and over how many blocks time stamps have to be compared before they are believed.
// The figures were found by comparing random entries with a sequential decode, bit by bit. It knows nothing of containers.
// Threads: pure values.
#pragma once

#include <cstdint>

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace quillet {

struct EntryRecipe {
    /// Decode from the start: containers find the place in such streams by a byte rate from the header, which is rounded or
    /// wrong.
    static constexpr std::int64_t everythingBefore = std::int64_t{ 1 } << 60;

    std::int64_t prerollFrames;
    /// Blocks, at least 1.
    int lookahead;
    /// Frames of which all blocks' lengths are multiples; 0 where that is not known beforehand.
    std::int64_t blockStep = 0;
};

/// `sampleRate` in frames per second; `blockFrames` is the length of a full decoded block, 0 where blocks differ.
EntryRecipe entryRecipe(AVCodecID codec, int sampleRate, std::int64_t blockFrames);

/// The decoder to prefer for `codec`, or null for the usual one: decoders that dither to 16 bits depend on what they decoded
/// before.
const char* preferredDecoder(AVCodecID codec);

}  // namespace quillet
