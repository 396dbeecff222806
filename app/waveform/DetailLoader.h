// Reads what a song looks like closely beside the main thread, once somebody looks closely: what is in view first, with two
// readers, then the rest of the song with one. Nothing is opened or decoded before that. A file that is gone or cannot be
// decoded leaves nothing to show, and nothing is said of it.
// Threads: main thread; its jobs on the background's.
#pragma once

#include "app/waveform/WaveformDetail.h"
#include "platform/base/FilePath.h"
#include "platform/media/AmplitudeReader.h"
#include "platform/schedule/BackgroundRunner.h"
#include "platform/schedule/Scheduler.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace quillet {

class DetailLoader {
public:
    /// Outlive the loader, and its jobs.
    struct Resources {
        /// Called on several threads at once.
        AmplitudeReaderOpener& opener;
        BackgroundRunner& background;
        Scheduler& scheduler;
        /// The end of the program: jobs soon end.
        std::stop_token programEnds = {};
    };

    explicit DetailLoader(const Resources& resources);
    /// Calls off what is under way, without waiting for it.
    ~DetailLoader();
    DetailLoader(const DetailLoader&) = delete;
    DetailLoader& operator=(const DetailLoader&) = delete;

    /// The song that may be looked at from now on; what was read of another (or of this one) goes.
    void setFile(std::optional<FilePath> file);
    /// This part of it is looked at.
    void look(const SongPart& part);

    /// What is there; null before anything is. Until the next call of `setFile`, it grows.
    [[nodiscard]] const WaveformDetail* detail() const { return m_detail ? &*m_detail : nullptr; }
    /// `changed` is told where `detail`, or its loudest sample, has changed.
    void onChange(std::function<void(const SongPart& part)> changed) { m_onChange = std::move(changed); }

private:
    class Work;
    class Job;

    void callOff();
    void start(bool isHelper);
    void take(const DetailLayout& layout, DetailChunk chunk);
    void tell(const SongPart& part);

    Resources m_resources;
    std::optional<FilePath> m_file;
    /// Shared with the jobs; null while nobody has looked.
    std::shared_ptr<Work> m_work;
    std::optional<WaveformDetail> m_detail;
    std::function<void(const SongPart& part)> m_onChange;
};

}  // namespace quillet
