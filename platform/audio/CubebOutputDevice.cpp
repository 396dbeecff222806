#include "platform/audio/CubebOutputDevice.h"

#include "platform/base/ThreadPriority.h"

#include <cubeb/cubeb.h>

#include <chrono>
#include <utility>

namespace quillet {
namespace {

struct ContextDeleter {
    void operator()(cubeb* context) const { cubeb_destroy(context); }
};

struct StreamDeleter {
    void operator()(cubeb_stream* stream) const
    {
        cubeb_stream_stop(stream);
        cubeb_stream_destroy(stream);
    }
};

std::int64_t steadyNanoseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

/// What PulseAudio calls safe; used where the library does not know better.
constexpr double usualLatencySeconds = 0.025;
constexpr int usualSampleRate = 48000;

}  // namespace

struct CubebOutputDevice::Stream {
    int sampleRate = 0;
    OutputCallback* callback = nullptr;
    WakeSemaphore* died = nullptr;
    std::atomic<bool> alive{ true };
    bool priorityRaised = false;
    /// Counted up before and after each change of the two below, so that a reader sees whether they belong together.
    std::atomic<std::uint32_t> handOvers{ 0 };
    std::atomic<std::int64_t> framesHandedOver{ 0 };
    std::atomic<std::int64_t> handedOverNanoseconds{ 0 };
    std::unique_ptr<cubeb, ContextDeleter> context;
    std::unique_ptr<cubeb_stream, StreamDeleter> stream;

    static long provide(cubeb_stream*, void* user, const void*, void* output, long frames) noexcept
    {
        auto* self = static_cast<Stream*>(user);
        if (!std::exchange(self->priorityRaised, true))
            raiseThreadPriority();
        self->callback->render({ static_cast<float*>(output), static_cast<std::size_t>(2 * frames) });
        self->handOvers.fetch_add(1);
        self->framesHandedOver.fetch_add(frames);
        self->handedOverNanoseconds.store(steadyNanoseconds());
        self->handOvers.fetch_add(1);
        return frames;
    }

    static void stateChanged(cubeb_stream*, void* user, cubeb_state state) noexcept
    {
        auto* self = static_cast<Stream*>(user);
        if (state != CUBEB_STATE_ERROR)
            return;
        self->alive.store(false);
        self->died->wake();
    }
};

CubebOutputDevice::CubebOutputDevice() = default;

CubebOutputDevice::~CubebOutputDevice() = default;

std::expected<int, OutputError> CubebOutputDevice::open(int sampleRate, OutputCallback& callback, WakeSemaphore& died)
{
    close();
    m_latencySeconds = usualLatencySeconds;
    auto stream = std::make_unique<Stream>();
    stream->callback = &callback;
    stream->died = &died;

    cubeb* context = nullptr;
    if (cubeb_init(&context, "Quillet", nullptr) != CUBEB_OK)
        return std::unexpected(OutputError::noServer);
    stream->context.reset(context);

    std::uint32_t preferredRate = 0;
    if (sampleRate == 0 && cubeb_get_preferred_sample_rate(context, &preferredRate) == CUBEB_OK && preferredRate > 0)
        sampleRate = static_cast<int>(preferredRate);
    else if (sampleRate == 0)
        sampleRate = usualSampleRate;
    stream->sampleRate = sampleRate;
    callback.streamBegins(0);
    cubeb_stream_params parameters{};
    parameters.format = CUBEB_SAMPLE_FLOAT32NE;
    parameters.rate = static_cast<std::uint32_t>(sampleRate);
    parameters.channels = 2;
    parameters.layout = CUBEB_LAYOUT_STEREO;
    parameters.prefs = CUBEB_STREAM_PREF_NONE;
    std::uint32_t latencyFrames = 0;
    if (cubeb_get_min_latency(context, &parameters, &latencyFrames) != CUBEB_OK)
        latencyFrames = static_cast<std::uint32_t>(usualLatencySeconds * sampleRate);

    cubeb_stream* handle = nullptr;
    if (cubeb_stream_init(context, &handle, "Playback", nullptr, nullptr, nullptr, &parameters, latencyFrames, &Stream::provide,
                          &Stream::stateChanged, stream.get())
        != CUBEB_OK)
        return std::unexpected(OutputError::refused);
    stream->stream.reset(handle);
    if (cubeb_stream_start(handle) != CUBEB_OK)
        return std::unexpected(OutputError::refused);
    m_stream = std::move(stream);
    return sampleRate;
}

void CubebOutputDevice::close() { m_stream.reset(); }

bool CubebOutputDevice::isAlive() const { return m_stream != nullptr && m_stream->alive.load(); }

double CubebOutputDevice::latencySeconds()
{
    // Not cubeb_stream_get_latency: after an error that ends the process. The position may be unknown (-1) for a while.
    std::uint64_t position = 0;
    if (!isAlive() || cubeb_stream_get_position(m_stream->stream.get(), &position) != CUBEB_OK)
        return usualLatencySeconds;
    const std::uint32_t handOvers = m_stream->handOvers.load();
    const std::int64_t handedOver = m_stream->framesHandedOver.load();
    const std::int64_t handedOverAt = m_stream->handedOverNanoseconds.load();
    if (handOvers % 2 != 0 || m_stream->handOvers.load() != handOvers)
        return m_latencySeconds;
    // As of the end of the last hand-over: what has sounded since has been waiting then.
    const double since = 1e-9 * static_cast<double>(steadyNanoseconds() - handedOverAt);
    const double waiting = static_cast<double>(handedOver - static_cast<std::int64_t>(position)) / m_stream->sampleRate;
    const double seconds = waiting + since;
    if (waiting >= 0 && seconds < 5)
        m_latencySeconds = seconds;
    return m_latencySeconds;
}

}  // namespace quillet
