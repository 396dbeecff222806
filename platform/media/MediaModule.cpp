#include "platform/media/MediaModule.h"

#include "platform/files/ProgramDirectories.h"

#include <dlfcn.h>

#include <utility>

namespace quillet {

MediaModule::MediaModule()
    : MediaModule(executableDirectory() / "quillet-media.so")
{
}

MediaModule::MediaModule(FilePath file)
    : m_file(std::move(file))
{
}

const MediaOpeners* MediaModule::openers()
{
    std::call_once(m_loaded, [this] {
        void* module = ::dlopen(m_file.c_str(), RTLD_NOW | RTLD_LOCAL);
        void* entry = module != nullptr ? ::dlsym(module, mediaModuleEntry) : nullptr;
        if (entry != nullptr)
            m_openers = reinterpret_cast<const MediaOpeners* (*)()>(entry)();
    });
    return m_openers;
}

std::expected<std::unique_ptr<AudioFile>, AudioFileError> MediaModule::AudioFiles::open(const FilePath& path)
{
    const MediaOpeners* openers = m_module.openers();
    if (openers == nullptr)
        return std::unexpected(AudioFileError::unreadable);
    return openers->audioFiles->open(path);
}

std::expected<std::unique_ptr<AmplitudeReader>, AudioFileError> MediaModule::AmplitudeReaders::open(const FilePath& path)
{
    const MediaOpeners* openers = m_module.openers();
    if (openers == nullptr)
        return std::unexpected(AudioFileError::unreadable);
    return openers->amplitudeReaders->open(path);
}

std::unique_ptr<AudioEncoder> MediaModule::Encoders::make(const EncoderSettings& settings, EncodedOutput& output)
{
    const MediaOpeners* openers = m_module.openers();
    return openers != nullptr ? openers->encoders->make(settings, output) : nullptr;
}

}  // namespace quillet
