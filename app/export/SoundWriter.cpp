#include "app/export/SoundWriter.h"

#include "app/export/WavWriter.h"

#include <cerrno>
#include <optional>
#include <utility>

namespace quillet {
namespace {

/// Encodes into an OutputFile.
class EncodedWriter final : public SoundWriter, private EncodedOutput {
public:
    explicit EncodedWriter(std::unique_ptr<OutputFile> file)
        : m_file(std::move(file))
    {
    }

    /// False where the format cannot be made.
    [[nodiscard]] std::expected<void, WriteError> begin(const EncoderSettings& settings, AudioEncoderMaker& encoders)
    {
        m_encoder = encoders.make(settings, *this);
        return result(m_encoder != nullptr);
    }

    [[nodiscard]] std::expected<void, WriteError> write(std::span<const float> stereo) override
    {
        return result(m_encoder->write(stereo));
    }

    [[nodiscard]] std::expected<void, WriteError> finish() override
    {
        if (auto encoded = result(m_encoder->finish()); !encoded)
            return encoded;
        return m_file->finish();
    }

private:
    [[nodiscard]] bool write(std::span<const std::byte> bytes) override { return keep(m_file->write(bytes)); }
    [[nodiscard]] bool seek(std::int64_t position) override { return keep(m_file->seek(position)); }
    [[nodiscard]] bool canSeek() const override { return m_file->canSeek(); }

    [[nodiscard]] bool keep(const std::expected<void, WriteError>& written)
    {
        if (!written && !m_error)
            m_error = written.error();
        return written.has_value();
    }

    /// What the disk said, or that the encoder would not.
    [[nodiscard]] std::expected<void, WriteError> result(bool succeeded) const
    {
        if (succeeded)
            return {};
        return std::unexpected(m_error.value_or(WriteError{ m_file->name(), ENOTSUP }));
    }

    std::unique_ptr<OutputFile> m_file;
    std::optional<WriteError> m_error;
    std::unique_ptr<AudioEncoder> m_encoder;
};

std::optional<AudioFormat> formatOf(const FilePath& target) { return audioFormatOf(target.extension().native()); }

}  // namespace

int writtenRate(const FilePath& target, int sampleRate)
{
    const auto format = formatOf(target);
    return format ? encodedRate(*format, sampleRate) : sampleRate;
}

std::expected<std::unique_ptr<SoundWriter>, WriteError> makeSoundWriter(const FilePath& target, int sampleRate,
                                                                        const SongTags& tags, AudioEncoderMaker& encoders)
{
    const auto format = formatOf(target);
    if (!format)
        return WavWriter::create(target, sampleRate);
    auto file = OutputFile::create(target);
    if (!file)
        return std::unexpected(std::move(file).error());
    auto writer = std::make_unique<EncodedWriter>(std::move(*file));
    if (auto begun = writer->begin({ *format, sampleRate, tags }, encoders); !begun)
        return std::unexpected(std::move(begun).error());
    return writer;
}

}  // namespace quillet
