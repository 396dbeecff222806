// The exact number of frames that a decode of a file from the start to the end yields, found by decoding its tail. What headers
// say is a hint only: encoders, trimming and truncation make it wrong.
// Threads: on the thread that has the decoder.
#pragma once

#include "platform/media/AlignedDecoder.h"

#include <cstdint>

namespace quillet {

/// 0 if nothing can be decoded. Leaves `decoder` at an unknown place: `enter` has to follow.
std::int64_t exactLength(AlignedDecoder& decoder);

}  // namespace quillet
