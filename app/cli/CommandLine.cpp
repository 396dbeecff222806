#include "app/cli/CommandLine.h"

#include "AppCore/Practice.h"
#include "AppCore/StemMix.h"
#include "AppCore/StemSession.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

namespace quillet {
namespace {

constexpr double maxTimeSeconds = 59999.999;

/// A number written out in full ("0.5", not "0.5s", "nan" or ""), or nothing.
std::optional<double> number(const std::string& text)
{
    double value = 0;
    const char* end = text.data() + text.size();
    const char* begin = text.starts_with('+') ? text.data() + 1 : text.data();
    const auto result = std::from_chars(begin, end, value);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

/// A shorter text of a number for messages: "5", "59999.999".
std::string shown(double value)
{
    std::ostringstream text;
    text.precision(8);
    text << value;
    return text.str();
}

/// Accepts numbers from `least` to `most`.
CLI::Validator between(double least, double most, const std::string& unit)
{
    const auto check = [=](std::string& text) -> std::string {
        const auto value = number(text);
        if (!value)
            return "“" + text + "” is not a number";
        if (*value < least || *value > most)
            return text + " is not between " + shown(least) + " and " + shown(most) + (unit.empty() ? "" : " " + unit);
        return {};
    };
    return { check, "" };
}

CLI::Validator wholeBetween(int least, int most)
{
    const auto check = [=](std::string& text) -> std::string {
        const auto value = number(text);
        if (!value || *value != std::floor(*value))
            return "“" + text + "” is not a whole number";
        if (*value < least || *value > most)
            return text + " is not between " + std::to_string(least) + " and " + std::to_string(most);
        return {};
    };
    return { check, "" };
}

/// What both commands take, as text until the values have been checked.
struct PlaybackArguments {
    std::string input, from, to, speed, pitch, channels, passes, delay, hold;
    std::vector<std::string> gains, stems;
    bool keepsFormants = false;

    void addTo(CLI::App& command)
    {
        command.add_option("IN", input, "The audio file")->required();
        command.add_option("--from", from, "Start of the region, in seconds (0)")->check(between(0, maxTimeSeconds, "seconds"));
        command.add_option("--to", to, "End of the region, in seconds (the end of the file)")
            ->check(between(0, maxTimeSeconds, "seconds"));
        command.add_option("--speed", speed, "Speed in percent, 5 to 300 (100); the pitch stays")
            ->check(between(5, 300, "percent"));
        command.add_option("--pitch", pitch, "Transposition in cents, -1200 to 1200 (0); the speed stays")
            ->check(between(-1200, 1200, "cents"));
        command.add_flag("--keep-formants", keepsFormants, "Let voices keep their character when they are transposed");
        command.add_option("--channels", channels, "Which channels: stereo, left, right, mono or sides (stereo)")
            ->check(CLI::IsMember(channelNames()));
        command
            .add_option("--eq", gains, "Equaliser gains in dB at 60, 250, 1000, 4000 and 12000 Hz, -12 to 12, comma-separated")
            ->delimiter(',')
            ->expected(1, -1)
            ->allow_extra_args(false)
            ->check(between(-12, 12, "dB"));
        command
            .add_option(
                "--stems", stems,
                "Play the separated stems, some of them at other volumes, 0 to 1.5: vocals=0,guitar=1.2 (vocals, drums, bass, "
                "guitar, piano, other)")
            ->delimiter(',')
            ->expected(1, -1)
            ->allow_extra_args(false);
        command.add_option("--passes", passes, "How often the region is played (1)")->check(wholeBetween(1, 10000));
        command.add_option("--delay", delay, "Pause between two passes, in seconds (0)")->check(between(0, 3600, "seconds"));
        command
            .add_option("--hold", hold,
                        "Hold the instant at this time, in seconds: a window of 0.08 s, repeated --passes times")
            ->check(between(0, maxTimeSeconds, "seconds"));
    }

    [[nodiscard]] std::expected<PlaybackOptions, UsageError> options() const
    {
        PlaybackOptions result;
        result.input = input;
        result.fromSeconds = number(from).value_or(0);
        result.toSeconds = number(to);
        result.speedPercent = number(speed).value_or(100);
        result.pitchCents = number(pitch).value_or(0);
        result.keepsFormants = keepsFormants;
        result.channels = channelsNamed(channels).value_or(ChannelMode::stereo);
        result.passes = static_cast<int>(number(passes).value_or(1));
        result.delaySeconds = number(delay).value_or(0);
        result.holdSeconds = number(hold);
        if (!gains.empty()) {
            if (gains.size() != 5)
                return std::unexpected(UsageError{ "--eq needs five gains, such as 3,0,-2.5,0,6." });
            result.equalizerGainsDb.emplace();
            for (std::size_t band = 0; band < gains.size(); ++band)
                (*result.equalizerGainsDb)[band] = number(gains[band]).value_or(0);
        }
        for (const std::string& stem : stems) {
            const auto sign = stem.find('=');
            const std::string key = stem.substr(0, sign);
            const auto volume = number(sign == std::string::npos ? "" : stem.substr(sign + 1));
            if (std::ranges::find(StemSession::keys, key) == StemSession::keys.end() || !volume || *volume < 0
                || *volume > StemMix::maxVolume)
                return std::unexpected(
                    UsageError{ "“" + stem + "” is no stem and its volume, such as vocals=0 or guitar=1.2." });
            if (!result.stemVolumes)
                result.stemVolumes.emplace();
            (*result.stemVolumes)[key] = *volume;
        }
        if (result.toSeconds && *result.toSeconds <= result.fromSeconds)
            return std::unexpected(UsageError{ "--from must be before --to." });
        return result;
    }
};

/// CLI11's message as one sentence.
std::string sentence(std::string message)
{
    if (const auto end = message.find('\n'); end != std::string::npos)
        message.resize(end);
    if (!message.empty() && !message.ends_with('.'))
        message += '.';
    return message;
}

}  // namespace

std::expected<Invocation, UsageError> parseCommandLine(const std::vector<std::string>& arguments)
{
    CLI::App program{ "Quillet, a music practice player: plays any part of a song slower, faster or transposed.", "quillet" };
    program.set_version_flag("--version", "quillet " QUILLET_VERSION);
    program.set_help_flag("-h,--help", "Print this help and leave");
    program.require_subcommand(0, 1);
    program.footer("Numbers use a point. Errors go to standard error; the exit status is 1 for them and 2 for wrong usage.");

    PlaybackArguments play, render;
    std::vector<std::string> files;
    std::string output;
    program.add_option("FILE", files,
                       "Audio files or folders to open in the window: the first song, and several as a list to go through");
    CLI::App* playCommand = program.add_subcommand("play", "Play an audio file, or a part of it");
    play.addTo(*playCommand);
    CLI::App* renderCommand = program.add_subcommand("render", "Write what would be played to a file");
    render.addTo(*renderCommand);
    renderCommand
        ->add_option("-o,--output", output,
                     "The file to write: .flac, .mp3, .m4a, .opus, or else a WAV file (32-bit float, stereo)")
        ->required();

    std::string waveformInput, picture;
    bool json = false;
    CLI::App* waveformCommand = program.add_subcommand("waveform", "Print or draw the waveform of an audio file");
    waveformCommand->add_option("IN", waveformInput, "The audio file")->required();
    CLI::Option* png = waveformCommand->add_option("--png", picture, "Draw it into this PNG file");
    waveformCommand->add_flag("--json", json, "Print the amplitudes as JSON (what happens without options)")->excludes(png);

    std::string infoInput;
    bool infoAsJson = false;
    CLI::App* infoCommand = program.add_subcommand("info", "Print how long an audio file is and what it is made of");
    infoCommand->add_option("IN", infoInput, "The audio file")->required();
    infoCommand->add_flag("--json", infoAsJson, "Print it as JSON");

    std::vector<std::string> separateInputs;
    std::string separateOutput;
    CLI::App* separateCommand =
        program.add_subcommand("separate", "Make the six stems of songs; those that have them are passed over");
    separateCommand->add_option("SONG", separateInputs, "The audio files")->required();
    CLI::Option* copies =
        separateCommand->add_option("-o,--output", separateOutput, "A folder that gets a copy of the stems of each song");

    // CLI11 wants the arguments in reverse.
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    try {
        program.parse(reversed);
    } catch (const CLI::CallForVersion& version) {
        return PrintText{ std::string(version.what()) + "\n" };
    } catch (const CLI::CallForHelp&) {
        return PrintText{ program.help() };
    } catch (const CLI::CallForAllHelp&) {
        return PrintText{ program.help("", CLI::AppFormatMode::All) };
    } catch (const CLI::ParseError& error) {
        return std::unexpected(UsageError{ sentence(error.what()) });
    }

    if (renderCommand->parsed()) {
        auto options = render.options();
        if (!options)
            return std::unexpected(options.error());
        return RenderFile{ { std::move(*options), output } };
    }
    if (waveformCommand->parsed()) {
        return ShowWaveform{ { waveformInput, *png ? std::optional<FilePath>(picture) : std::nullopt } };
    }
    if (separateCommand->parsed()) {
        return SeparateSongs{ { { separateInputs.begin(), separateInputs.end() },
                                *copies ? std::optional<FilePath>(separateOutput) : std::nullopt } };
    }
    if (infoCommand->parsed())
        return ShowInfo{ { infoInput, infoAsJson } };
    if (playCommand->parsed()) {
        auto options = play.options();
        if (!options)
            return std::unexpected(options.error());
        return PlayFile{ std::move(*options) };
    }
    return OpenWindow{ { files.begin(), files.end() } };
}

}  // namespace quillet
