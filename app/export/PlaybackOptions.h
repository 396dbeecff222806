// What the command line asks to be played, checked as far as that goes without the file.
#pragma once

#include "AppCore/Practice.h"
#include "platform/audio/ChannelMode.h"
#include "platform/base/FilePath.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quillet {

struct PlaybackOptions {
    FilePath input;
    double fromSeconds = 0;
    /// Nothing: to the end of the file.
    std::optional<double> toSeconds;
    double speedPercent = 100;
    double pitchCents = 0;
    /// Voices keep their character when they are transposed.
    bool keepsFormants = false;
    ChannelMode channels = ChannelMode::stereo;
    /// Nothing: equaliser off.
    std::optional<std::array<double, 5>> equalizerGainsDb;
    int passes = 1;
    /// Something: these are played as a list, `passes` times, with their own speeds and pitches, instead of the region.
    std::vector<NamedLoop> loops;
    double delaySeconds = 0;
    /// Something: hold the short window that begins here instead of playing the region.
    std::optional<double> holdSeconds;
    /// The volumes of some stems, linear factors, by their keys: the stems are played then, the others as they are. Nothing:
    /// the file itself.
    std::optional<std::map<std::string, double>> stemVolumes;
    /// The file of each stem.
    std::map<std::string, FilePath> stems;
};

struct RenderOptions {
    PlaybackOptions playback;
    FilePath output;
};

}  // namespace quillet
