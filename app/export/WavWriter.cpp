#include "app/export/WavWriter.h"

#include "app/export/WavHeader.h"
#include "platform/base/Require.h"

#include <utility>

namespace quillet {

WavWriter::WavWriter(std::unique_ptr<OutputFile> file, int sampleRate)
    : m_file(std::move(file)),
      m_sampleRate(sampleRate)
{
}

std::expected<std::unique_ptr<WavWriter>, WriteError> WavWriter::create(const FilePath& target, int sampleRate)
{
    REQUIRE(sampleRate > 0);
    auto file = OutputFile::create(target);
    if (!file)
        return std::unexpected(std::move(file).error());
    std::unique_ptr<WavWriter> writer(new WavWriter(std::move(*file), sampleRate));
    if (auto begun = writer->m_file->write(wavHeader(sampleRate, std::nullopt)); !begun)
        return std::unexpected(std::move(begun).error());
    return writer;
}

std::expected<void, WriteError> WavWriter::write(std::span<const float> stereo)
{
    REQUIRE(stereo.size() % 2 == 0);
    auto written = m_file->write(std::as_bytes(stereo));
    if (written)
        m_frames += static_cast<std::int64_t>(stereo.size() / 2);
    return written;
}

std::expected<void, WriteError> WavWriter::finish()
{
    if (m_file->canSeek()) {
        if (auto rewound = m_file->seek(0); !rewound)
            return rewound;
        if (auto written = m_file->write(wavHeader(m_sampleRate, m_frames)); !written)
            return written;
    }
    return m_file->finish();
}

}  // namespace quillet
