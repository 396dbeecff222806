#include "tools/demo/DemoSong.h"

#include "tools/demo/Instruments.h"
#include "tools/demo/Room.h"

#include <array>
#include <vector>

namespace quillet {
namespace {

constexpr double beatsPerMinute = 108;
constexpr int stepsPerBar = 16;
constexpr double secondsPerStep = 60 / beatsPerMinute / 4;
/// By how much of a step the second of two sixteenths comes late.
constexpr double swing = 0.18;
constexpr int bars = 8;
constexpr double tailSeconds = 2.2;

double secondsAt(int step) { return (step + (step % 2 != 0 ? swing : 0)) * secondsPerStep; }

Note noteAt(int step, int steps, double pitch, double strength)
{
    return { secondsAt(step), secondsAt(step + steps) - secondsAt(step), pitch, strength };
}

struct Chord {
    int step;
    int steps;
    int root;
    std::array<int, 4> upper;
};

constexpr std::array<Chord, 11> chords{ {
    { 0, 16, 41, { 57, 60, 64, 67 } },  // F major 9
    { 16, 16, 40, { 56, 62, 67, 71 } },  // E 7 sharp 9
    { 32, 16, 45, { 55, 60, 64, 71 } },  // A minor 9
    { 48, 8, 43, { 58, 62, 65, 69 } },  // G minor 9
    { 56, 8, 36, { 58, 62, 64, 69 } },  // C 13
    { 64, 16, 41, { 57, 60, 64, 67 } },  // F major 9
    { 80, 16, 40, { 56, 62, 67, 71 } },  // E 7 sharp 9
    { 96, 16, 45, { 55, 60, 64, 71 } },  // A minor 9
    { 112, 8, 38, { 53, 60, 64, 69 } },  // D minor 9
    { 120, 8, 43, { 53, 59, 64, 69 } },  // G 13
    { 128, 12, 36, { 55, 59, 62, 64 } },  // C major 9
} };

struct MelodyNote {
    int step;
    int steps;
    int pitch;
};

constexpr std::array<MelodyNote, 43> melody{ {
    { 2, 2, 76 },   { 4, 3, 79 },   { 7, 5, 81 },   { 12, 2, 79 },  { 14, 2, 76 },  //
    { 16, 3, 74 },  { 19, 6, 76 },  { 26, 2, 71 },  { 28, 2, 74 },  { 30, 2, 76 },  //
    { 32, 4, 72 },  { 36, 2, 71 },  { 38, 5, 69 },  { 44, 2, 64 },  { 46, 2, 67 },  //
    { 48, 3, 69 },  { 51, 3, 70 },  { 54, 2, 74 },  { 56, 4, 76 },  { 60, 2, 74 },  { 62, 2, 72 },  //
    { 66, 2, 72 },  { 68, 3, 76 },  { 71, 5, 79 },  { 76, 2, 81 },  { 78, 2, 84 },  //
    { 80, 3, 83 },  { 83, 3, 79 },  { 86, 2, 76 },  { 88, 3, 74 },  { 91, 3, 71 },  { 94, 2, 74 },  //
    { 96, 6, 76 },  { 102, 2, 72 }, { 104, 2, 74 }, { 106, 2, 76 }, { 108, 4, 79 },  //
    { 112, 3, 77 }, { 115, 3, 76 }, { 118, 2, 74 }, { 120, 2, 76 }, { 122, 5, 74 }, { 128, 10, 76 },  //
} };

void playDrums(StereoSound& sound)
{
    for (int bar = 0; bar < bars; ++bar) {
        const int first = bar * stepsPerBar;
        const auto at = [&](int step, double strength) { return Stroke{ secondsAt(first + step), strength }; };
        playKick(sound, at(0, 1));
        playKick(sound, at(7, 0.6));
        playKick(sound, at(10, 0.85));
        playSnare(sound, at(4, 0.9));
        playSnare(sound, at(12, 1));
        playSnare(sound, at(9, 0.18));
        if (bar % 2 == 1)
            playSnare(sound, at(15, 0.25));
        const bool fill = bar == bars - 1;
        for (int step = 0; step < (fill ? 12 : stepsPerBar); step += 2)
            playHat(sound, at(step, step % 4 == 0 ? 0.8 : 0.5), bar % 4 == 3 && step == 14 ? Hat::open : Hat::closed);
        for (int step = 1; step < stepsPerBar; step += 2)
            playShaker(sound, at(step, step % 4 == 3 ? 0.9 : 0.6));
        if (fill)
            for (int step = 13; step < stepsPerBar; ++step)
                playSnare(sound, at(step, 0.25 + 0.15 * (step - 12)));
    }
    playKick(sound, { secondsAt(bars * stepsPerBar), 1 });
    playHat(sound, { secondsAt(bars * stepsPerBar), 0.9 }, Hat::open);
}

void playBassLine(StereoSound& sound)
{
    for (std::size_t i = 0; i < chords.size(); ++i) {
        const Chord& chord = chords[i];
        if (i + 1 == chords.size()) {
            playBass(sound, noteAt(chord.step, chord.steps, chord.root, 1));
            break;
        }
        playBass(sound, noteAt(chord.step, 3, chord.root, 1));
        playBass(sound, noteAt(chord.step + 3, 2, chord.root, 0.6));
        const int next = chords[i + 1].root;
        const int approach = next > chord.root ? next - 1 : next + 1;
        if (chord.steps == stepsPerBar) {
            playBass(sound, noteAt(chord.step + 6, 2, chord.root + 7, 0.75));
            playBass(sound, noteAt(chord.step + 8, 2, chord.root + 12, 0.8));
            playBass(sound, noteAt(chord.step + 10, 3, chord.root, 0.9));
        }
        playBass(sound, noteAt(chord.step + chord.steps - 2, 2, approach, 0.75));
    }
}

void playChords(StereoSound& piano, StereoSound& pad)
{
    for (const Chord& chord : chords) {
        const bool last = &chord == &chords.back();
        double strum = 0;
        for (const int pitch : chord.upper) {
            Note note = noteAt(chord.step, last ? chord.steps : 5, pitch, 0.7);
            note.startSeconds += strum;
            playPiano(piano, note);
            if (chord.steps == stepsPerBar) {
                playPiano(piano, noteAt(chord.step + 7, 2, pitch, 0.45));
                playPiano(piano, noteAt(chord.step + 10, 5, pitch, 0.55));
            }
            playPad(pad, noteAt(chord.step, chord.steps, pitch, 1));
            strum += 0.006;
        }
    }
}

}  // namespace

StereoSound renderDemoSong()
{
    const auto frames = static_cast<std::size_t>((secondsAt(bars * stepsPerBar) + tailSeconds) * StereoSound::sampleRate);
    StereoSound drums(frames);
    StereoSound bass(frames);
    StereoSound piano(frames);
    StereoSound pad(frames);
    StereoSound lead(frames);
    playDrums(drums);
    playBassLine(bass);
    playChords(piano, pad);
    for (const MelodyNote& note : melody)
        playLead(lead, noteAt(note.step, note.steps, note.pitch, note.step % 4 == 0 ? 0.9 : 0.75));

    mixInto(lead, echoOf(lead, 3 * secondsPerStep, 0.45), 0.28);
    StereoSound toRoom(frames);
    mixInto(toRoom, drums, 0.12);
    mixInto(toRoom, piano, 0.35);
    mixInto(toRoom, pad, 0.4);
    mixInto(toRoom, lead, 0.3);

    StereoSound song(frames);
    mixInto(song, drums, 0.62);
    mixInto(song, bass, 0.5);
    mixInto(song, piano, 0.65);
    mixInto(song, pad, 0.4);
    mixInto(song, lead, 0.58);
    mixInto(song, roomOf(toRoom), 0.22);
    level(song, -1);
    return song;
}

}  // namespace quillet
