// AmplitudeReader on FFmpeg's libraries: takes the sums from the decoder's own samples, without converting them first.
// Threads: as AmplitudeReader and AmplitudeReaderOpener say.
#pragma once

#include "platform/media/AmplitudeReader.h"

namespace quillet {

class FfmpegAmplitudeReaderOpener final : public AmplitudeReaderOpener {
public:
    [[nodiscard]] std::expected<std::unique_ptr<AmplitudeReader>, AudioFileError> open(const FilePath& path) override;
};

}  // namespace quillet
