#include "platform/media/LengthProbe.h"

#include <algorithm>

namespace quillet {
namespace {

/// Where the last block after `from` ends; 0 if none comes.
std::int64_t decodeToEnd(AlignedDecoder& decoder, std::int64_t from)
{
    std::int64_t end = 0;
    decoder.enter(from);
    while (const auto block = decoder.next())
        end = std::max(end, block->position + block->frames);
    return end;
}

bool yieldsSound(AlignedDecoder& decoder, std::int64_t from)
{
    decoder.enter(from);
    return decoder.next().has_value();
}

}  // namespace

std::int64_t exactLength(AlignedDecoder& decoder)
{
    const auto last = decoder.lastPacketPosition();
    std::int64_t behind = std::max<std::int64_t>(last.value_or(decoder.claimedLength().value_or(0)), 0);
    if (const std::int64_t end = decodeToEnd(decoder, behind); end > 0)
        return end;
    // Truncated: the index promises more than there is. Find the last second that can be entered.
    std::int64_t fine = 0;
    while (behind - fine > decoder.sampleRate()) {
        const std::int64_t middle = fine + (behind - fine) / 2;
        (yieldsSound(decoder, middle) ? fine : behind) = middle;
    }
    return decodeToEnd(decoder, fine);
}

}  // namespace quillet
