#include "platform/media/AudioFile.h"

namespace quillet {

std::string describe(AudioFileError error, const FilePath& path)
{
    const std::string name = "“" + displayText(path) + "”";
    switch (error) {
    case AudioFileError::notFound:
        return name + " does not exist.";
    case AudioFileError::notAFile:
        return name + " is not a file: choose an audio file.";
    case AudioFileError::notPermitted:
        return name + " may not be read by you: change its permissions first.";
    case AudioFileError::empty:
        return name + " is empty: there is no sound in it.";
    case AudioFileError::notAudio:
        return name + " is not an audio file of a known kind.";
    case AudioFileError::noAudioTrack:
        return name + " has no audio track.";
    case AudioFileError::unreadable:
        break;
    }
    return name + " cannot be read: the file is damaged, its encoding is not supported or its disk fails.";
}

}  // namespace quillet
