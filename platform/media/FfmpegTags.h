// The tags of a file that FFmpeg has opened. It reads nothing more of the file.
// Threads: as the format context, confined to one thread at a time.
#pragma once

#include "platform/media/FfmpegHandles.h"
#include "platform/media/SongTags.h"

namespace quillet {

/// `sound` is the track that is played.
[[nodiscard]] SongTags tagsOf(const AVFormatContext& format, const AVStream& sound);

}  // namespace quillet
