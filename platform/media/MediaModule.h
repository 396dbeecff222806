// The decoders and encoders, in a module beside the executable that is loaded when a file is first opened: they bring more than
// a hundred libraries with them, which would hold up every start of the program. Whoever opens files by it does not notice.
// Threads: callable from every thread.
#pragma once

#include "platform/base/FilePath.h"
#include "platform/media/AmplitudeReader.h"
#include "platform/media/AudioEncoder.h"
#include "platform/media/AudioFile.h"

#include <mutex>

namespace quillet {

/// What the module gives: the name of its one function, and that function's answer. Both openers last as long as the program.
inline constexpr const char* mediaModuleEntry = "quilletMediaEntry";
struct MediaOpeners {
    AudioFileOpener* audioFiles;
    AmplitudeReaderOpener* amplitudeReaders;
    AudioEncoderMaker* encoders;
};

class MediaModule {
public:
    /// The module beside the executable.
    MediaModule();
    explicit MediaModule(FilePath file);
    /// The module stays loaded.
    ~MediaModule() = default;
    MediaModule(const MediaModule&) = delete;
    MediaModule& operator=(const MediaModule&) = delete;

    /// Loads the module now, so that the first file need not wait for it. Some 20 ms.
    void preload() { static_cast<void>(openers()); }

    /// Answer `unreadable` for every file where the module cannot be loaded.
    [[nodiscard]] AudioFileOpener& audioFiles() { return m_audioFiles; }
    [[nodiscard]] AmplitudeReaderOpener& amplitudeReaders() { return m_amplitudeReaders; }
    /// Makes no encoder where the module cannot be loaded.
    [[nodiscard]] AudioEncoderMaker& encoders() { return m_encoders; }

private:
    class AudioFiles final : public AudioFileOpener {
    public:
        explicit AudioFiles(MediaModule& module)
            : m_module(module)
        {
        }
        [[nodiscard]] std::expected<std::unique_ptr<AudioFile>, AudioFileError> open(const FilePath& path) override;

    private:
        MediaModule& m_module;
    };
    class AmplitudeReaders final : public AmplitudeReaderOpener {
    public:
        explicit AmplitudeReaders(MediaModule& module)
            : m_module(module)
        {
        }
        [[nodiscard]] std::expected<std::unique_ptr<AmplitudeReader>, AudioFileError> open(const FilePath& path) override;

    private:
        MediaModule& m_module;
    };

    class Encoders final : public AudioEncoderMaker {
    public:
        explicit Encoders(MediaModule& module)
            : m_module(module)
        {
        }
        [[nodiscard]] std::unique_ptr<AudioEncoder> make(const EncoderSettings& settings, EncodedOutput& output) override;

    private:
        MediaModule& m_module;
    };

    /// Null where it cannot be loaded.
    [[nodiscard]] const MediaOpeners* openers();

    FilePath m_file;
    std::once_flag m_loaded;
    const MediaOpeners* m_openers = nullptr;
    AudioFiles m_audioFiles{ *this };
    AmplitudeReaders m_amplitudeReaders{ *this };
    Encoders m_encoders{ *this };
};

}  // namespace quillet
