// The program's command line: turns the arguments into one of the things to do. It reads no files and starts nothing.
// Threads: main thread.
#pragma once

#include "app/cli/InfoCommand.h"
#include "app/cli/SeparateCommand.h"
#include "app/cli/WaveformCommand.h"
#include "app/export/PlaybackOptions.h"

#include <expected>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace quillet {

/// Text to print on standard output, and nothing else to do.
struct PrintText {
    std::string text;
};

struct PlayFile {
    PlaybackOptions options;
};

struct RenderFile {
    RenderOptions options;
};

struct ShowWaveform {
    WaveformOptions options;
};

struct SeparateSongs {
    SeparateOptions options;
};

struct ShowInfo {
    InfoOptions options;
};

/// The window, with files and folders to open in it, or without.
struct OpenWindow {
    std::vector<FilePath> files;
};

using Invocation = std::variant<PrintText, OpenWindow, PlayFile, RenderFile, ShowWaveform, ShowInfo, SeparateSongs>;

/// One sentence that says what is wrong with the arguments.
struct UsageError {
    std::string message;
};

/// `arguments` leave out the program's name; they are bytes, file names that are not UTF-8 included.
[[nodiscard]] std::expected<Invocation, UsageError> parseCommandLine(const std::vector<std::string>& arguments);

}  // namespace quillet
