// Computes what the waveform view draws: about 2000 amplitudes of a file, the loudest being 1. It decodes the file once, on
// several threads where the format can be entered exactly in its middle; neither stores nor draws anything.
// Threads: `extract` blocks until it is done and is called on a thread that may wait, never on the main thread.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/media/AmplitudeReader.h"

#include <expected>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace quillet {

enum class WaveformError { unreadableFile, noAudioTrack, readFailed };

class WaveformGenerator {
public:
    /// `fraction` is 0 to 1 and rises from call to call; `message` is for the user.
    using Progress = std::function<void(double fraction, const std::string& message)>;

    /// What does not change from file to file.
    struct Resources {
        /// Called on several threads at once.
        AmplitudeReaderOpener& opener;
        /// Threads that decode, at least 1. More than the machine has cores is of no use.
        int threads = 1;
        /// The end of the program: `extract` soon answers `readFailed`.
        std::stop_token programEnds;
    };

    /// One value for every bucket of length / 2000 frames (at least one frame), in time order, the last bucket being shorter:
    /// the mean of the absolute values of its frames, mixed to one channel, as a part of the largest. A silent file is all 0.
    /// `progress` is called on any of the threads, by one at a time, after every value.
    [[nodiscard]] static std::expected<std::vector<float>, WaveformError>
    extract(const Resources& resources, const FilePath& url, const Progress& progress);
};

}  // namespace quillet
