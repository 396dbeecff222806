// The mapping between a time in the file and a place in the waveform view, under a zoom and a pan. It draws nothing and
// limits neither zoom nor pan.
// Threads: a value, no shared state.
#pragma once

namespace quillet {

struct WaveformCoordinates {
    /// Of the file, seconds.
    double duration = 0;
    /// Points.
    double viewWidth = 0;
    /// The whole waveform is this many views wide.
    double zoomLevel = 1;
    /// Points from the waveform's left end to the view's left edge.
    double panOffset = 0;

    bool operator==(const WaveformCoordinates&) const = default;

    /// Points from the view's left edge; outside the view for a time that it does not show.
    [[nodiscard]] double timeToX(double time) const;

    /// The time at `x` points from the view's left edge, in seconds within the file.
    [[nodiscard]] double xToTime(double x) const;
};

}  // namespace quillet
