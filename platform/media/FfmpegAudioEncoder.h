// Encodes with FFmpeg's libraries: FLAC and AAC with their own encoders, MP3 with LAME's, Opus with libopus.
// Threads: as AudioEncoderMaker.
#pragma once

#include "platform/media/AudioEncoder.h"

namespace quillet {

class FfmpegAudioEncoderMaker final : public AudioEncoderMaker {
public:
    [[nodiscard]] std::unique_ptr<AudioEncoder> make(const EncoderSettings& settings, EncodedOutput& output) override;
};

}  // namespace quillet
