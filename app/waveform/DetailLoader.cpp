#include "app/waveform/DetailLoader.h"

#include "app/waveform/DetailPlan.h"
#include "platform/base/ThreadPriority.h"

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace quillet {

/// What the jobs for one song share with each other and the main thread.
class DetailLoader::Work {
public:
    /// An open file, and the chunk that was read from it last.
    struct Reader {
        std::unique_ptr<AmplitudeReader> file;
        std::optional<std::int64_t> last = std::nullopt;
    };

    explicit Work(std::stop_token programEnds)
        : m_programEnds(std::move(programEnds))
    {
    }

    void callOff() { m_isCalledOff = true; }
    [[nodiscard]] bool isCalledOff() const { return m_isCalledOff || m_programEnds.stop_requested(); }

    /// Whether another job is worth starting for what is in view.
    [[nodiscard]] bool look(const SongPart& view)
    {
        const std::scoped_lock lock(m_mutex);
        m_view = view;
        if (!m_plan)
            return false;
        m_plan->look(view.first, view.end);
        return m_plan->wantsNear() && !std::exchange(m_isHelped, true);
    }

    /// False if `file` is of no use: it is another song by now, or one that has no room for a helper.
    [[nodiscard]] bool admit(const AmplitudeReader& file, bool isHelper)
    {
        const std::scoped_lock lock(m_mutex);
        if (m_layout)
            return file.length() == m_layout->length() && (file.entersAnywhere() || !isHelper);
        m_layout = DetailLayout(file.length());
        m_plan.emplace(m_layout->chunkCount(), file.entersAnywhere() ? DetailPlan::Order::any : DetailPlan::Order::inOrder);
        m_plan->look(m_view.first, m_view.end);
        return true;
    }

    /// One that another job is done with.
    [[nodiscard]] Reader takeReader()
    {
        const std::scoped_lock lock(m_mutex);
        return std::exchange(m_idle, {});
    }
    void leaveReader(Reader reader)
    {
        const std::scoped_lock lock(m_mutex);
        m_isHelped = false;
        if (m_plan && !m_isWhole)
            m_idle = std::move(reader);
    }
    /// Whether all has been read, or never will be.
    [[nodiscard]] bool isWhole() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_isWhole;
    }
    void endReading()
    {
        const std::scoped_lock lock(m_mutex);
        m_isWhole = true;
        m_idle = {};
    }

    [[nodiscard]] std::optional<std::int64_t> takeChunk(std::optional<std::int64_t> last, DetailPlan::Scope scope)
    {
        const std::scoped_lock lock(m_mutex);
        return m_plan->take(last, scope);
    }
    void finishChunk(std::int64_t chunk)
    {
        const std::scoped_lock lock(m_mutex);
        m_plan->finish(chunk);
    }
    [[nodiscard]] bool wantsNear() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_plan->wantsNear();
    }
    [[nodiscard]] DetailLayout layout() const
    {
        const std::scoped_lock lock(m_mutex);
        return *m_layout;
    }

private:
    const std::stop_token m_programEnds;
    std::atomic<bool> m_isCalledOff = false;
    mutable std::mutex m_mutex;
    // Guarded by it.
    SongPart m_view;
    std::optional<DetailLayout> m_layout;
    std::optional<DetailPlan> m_plan;
    Reader m_idle;
    bool m_isHelped = true;
    bool m_isWhole = false;
};

// ---- Background threads ----

/// Reads chunks until nothing is left, or, as a helper, until what is in view is there.
class DetailLoader::Job {
public:
    Job(DetailLoader& loader, bool isHelper)
        : m_loader(&loader),
          m_resources(loader.m_resources),
          m_file(*loader.m_file),
          m_work(loader.m_work),
          m_isHelper(isHelper)
    {
    }

    void operator()() const
    {
        Work::Reader reader = m_isHelper ? m_work->takeReader() : Work::Reader{};
        if (!reader.file && !(m_isHelper && m_work->isWhole()))
            reader.file = opened();
        if (reader.file)
            read(reader);
        if (m_isHelper)
            m_work->leaveReader(std::move(reader));
        else
            m_work->endReading();
    }

private:
    [[nodiscard]] std::unique_ptr<AmplitudeReader> opened() const
    {
        if (m_work->isCalledOff())
            return nullptr;
        auto file = m_resources.opener.open(m_file);
        if (!file || m_work->isCalledOff() || !m_work->admit(**file, m_isHelper))
            return nullptr;
        return std::move(*file);
    }

    void read(Work::Reader& reader) const
    {
        const DetailLayout layout = m_work->layout();
        bool isLow = false;
        while (!m_work->isCalledOff()) {
            const auto chunk = m_work->takeChunk(reader.last, m_isHelper ? DetailPlan::Scope::near : DetailPlan::Scope::all);
            if (!chunk)
                return;
            auto blocks = blocksOf(*chunk, layout, reader);
            if (m_work->isCalledOff())
                return;
            m_work->finishChunk(*chunk);
            // In a shared_ptr, since what can be posted can be copied.
            deliver([layout, made = std::make_shared<DetailChunk>(layout, *chunk, std::move(blocks))](DetailLoader& loader) {
                loader.take(layout, std::move(*made));
            });
            // The rest is not waited for.
            if (!m_isHelper && !isLow && !m_work->wantsNear()) {
                lowerThreadPriority();
                isLow = true;
            }
        }
    }

    [[nodiscard]] std::vector<SoundSummary> blocksOf(std::int64_t chunk, const DetailLayout& layout, Work::Reader& reader) const
    {
        std::vector<SoundSummary> blocks;
        blocks.reserve(static_cast<std::size_t>(layout.chunkFrames() / layout.blockFrames()));
        const std::int64_t end = layout.chunkStart(chunk + 1);
        if (reader.last.value_or(-2) + 1 != chunk)
            reader.file->enter(layout.chunkStart(chunk));
        for (std::int64_t frame = layout.chunkStart(chunk); frame < end && !m_work->isCalledOff();
             frame += layout.blockFrames())
            blocks.push_back(reader.file->summary(layout.framesAt(frame, 0)));
        reader.last = chunk;
        return blocks;
    }

    /// On the main thread, if it is still wanted there.
    void deliver(std::function<void(DetailLoader&)> action) const
    {
        m_resources.scheduler.post([loader = m_loader, work = m_work, action = std::move(action)] {
            if (!work->isCalledOff())
                action(*loader);
        });
    }

    /// Gone once the work is called off.
    DetailLoader* m_loader;
    Resources m_resources;
    FilePath m_file;
    std::shared_ptr<Work> m_work;
    bool m_isHelper;
};

// ---- Main thread ----

DetailLoader::DetailLoader(const Resources& resources)
    : m_resources(resources)
{
}

DetailLoader::~DetailLoader() { callOff(); }

void DetailLoader::callOff()
{
    if (m_work)
        m_work->callOff();
    m_work = nullptr;
}

void DetailLoader::setFile(std::optional<FilePath> file)
{
    callOff();
    m_file = std::move(file);
    m_detail.reset();
    tell({});
}

void DetailLoader::look(const SongPart& part)
{
    if (!m_file)
        return;
    const bool isFirstLook = !m_work;
    if (isFirstLook)
        m_work = std::make_shared<Work>(m_resources.programEnds);
    const bool helps = m_work->look(part);
    if (isFirstLook)
        start(false);
    if (isFirstLook || helps)
        start(true);
}

void DetailLoader::start(bool isHelper) { m_resources.background.run(Job(*this, isHelper)); }

void DetailLoader::take(const DetailLayout& layout, DetailChunk chunk)
{
    if (!m_detail)
        m_detail.emplace(layout);
    const auto length = static_cast<double>(layout.length());
    SongPart part{ static_cast<double>(layout.chunkStart(chunk.index())) / length,
                   static_cast<double>(layout.chunkStart(chunk.index() + 1)) / length };
    if (chunk.loudest() > m_detail->loudest())
        part = {};
    m_detail->add(std::move(chunk));
    tell(part);
}

void DetailLoader::tell(const SongPart& part)
{
    if (m_onChange)
        m_onChange(part);
}

}  // namespace quillet
