// Which files the program opens: what the open panel lists, a drop may bring and the command line may name.
// Threads: callable from every thread.
#pragma once

#include "platform/base/FilePath.h"

#include <array>
#include <string_view>

namespace quillet {

/// The ends of their names, in small letters: sound, and films, whose sound is played. No playlists: they are no sound.
inline constexpr std::array<std::string_view, 25> supportedAudioTypes{
    "mp3", "wav", "aif", "aiff", "aifc", "flac", "m4a", "m4b", "aac", "alac", "ogg",  "oga", "opus",
    "wma", "wv",  "ape", "tta",  "mka",  "ac3",  "caf", "mp2", "mp4", "mkv",  "webm", "mov",
};

/// What desktops call them.
inline constexpr std::array<std::string_view, 25> supportedAudioMimeTypes{
    "audio/mpeg",         "audio/x-wav",      "audio/vnd.wave",   "audio/x-aiff",   "audio/x-aifc",
    "audio/flac",         "audio/mp4",        "audio/x-m4b",      "audio/aac",      "audio/ogg",
    "audio/x-vorbis+ogg", "audio/x-opus+ogg", "audio/x-flac+ogg", "audio/x-ms-wma", "audio/x-wavpack",
    "audio/x-ape",        "audio/x-tta",      "audio/x-matroska", "audio/ac3",      "audio/x-caf",
    "audio/mp2",          "video/mp4",        "video/x-matroska", "video/webm",     "video/quicktime",
};

/// By the name alone: the file may lie on a disk that does not answer.
[[nodiscard]] bool isSupportedAudio(const FilePath& file);

/// Whether the name says that the file is something else: a text, a picture, a list of songs. One whose name says nothing may
/// be tried.
[[nodiscard]] bool isNoAudio(const FilePath& file);

}  // namespace quillet
