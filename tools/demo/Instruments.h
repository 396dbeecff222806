// The players of the demo song: each adds one note or one stroke to a sound. They are small synthesisers, made to be pleasant
// rather than flexible, and the same on every run.
// Threads: pure functions.
#pragma once

#include "tools/demo/StereoSound.h"

namespace quillet {

/// `startSeconds` and `lengthSeconds` are 0 or more, `pitch` counts semitones as MIDI does (69 is 440 Hz), `strength` is 0
/// to 1.
struct Note {
    double startSeconds;
    double lengthSeconds;
    double pitch;
    double strength;
};

struct Stroke {
    double startSeconds;
    double strength;
};

void playKick(StereoSound& sound, const Stroke& stroke);
void playSnare(StereoSound& sound, const Stroke& stroke);
enum class Hat { closed, open };
void playHat(StereoSound& sound, const Stroke& stroke, Hat hat);
void playShaker(StereoSound& sound, const Stroke& stroke);

void playBass(StereoSound& sound, const Note& note);
/// A tine piano, wandering softly between the sides.
void playPiano(StereoSound& sound, const Note& note);
void playPad(StereoSound& sound, const Note& note);
void playLead(StereoSound& sound, const Note& note);

}  // namespace quillet
