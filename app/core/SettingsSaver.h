// Keeps the settings of the open song: a moment after the last of several changes, or at once. Which settings these are it asks
// when it saves them.
// Threads: main thread.
#pragma once

#include "AppCore/PracticeStore.h"
#include "AppCore/SettingsStore.h"
#include "AppCore/StemMixStore.h"
#include "AppCore/StemSessionStore.h"
#include "app/core/AppValues.h"
#include "platform/base/FilePath.h"
#include "platform/schedule/Scheduler.h"

#include <optional>

namespace quillet {

class SettingsSaver {
public:
    static constexpr double delaySeconds = 0.3;

    struct Stores {
        SettingsStore& settings;
        StemSessionStore& stemSessions;
        StemMixStore& stemMixes;
        PracticeStore& practices;
    };

    /// All outlive the saver.
    SettingsSaver(Scheduler& scheduler, const Stores& stores, const AppValues& values)
        : m_scheduler(scheduler),
          m_store(stores.settings),
          m_stemSessions(stores.stemSessions),
          m_stemMixes(stores.stemMixes),
          m_practices(stores.practices),
          m_values(values)
    {
    }

    /// The values are those of the file that is open now: while another one is being opened they still belong to the one
    /// before.
    void adoptFile();

    /// Saves what is current `delaySeconds` after the last call, for the file that is open now. Does nothing without a file, or
    /// while one is being opened whose settings these are not yet.
    void saveSoon();
    /// Saves at once, if a file is loaded.
    void saveNow();

    /// Saves the stems of the loaded file at once; does nothing without both.
    void saveStemSession();
    /// Saves their mix after the last of several changes, or with the settings if that is earlier.
    void saveStemMixSoon();
    /// The same for what is kept of the practice.
    void savePracticeSoon();

    /// What the song was practised with before, for a song that starts with the defaults: it is kept beside the settings, so
    /// that it is not lost if the program ends before the user has answered.
    void keepAside(const FileSettings& settings) { m_store.keepAside(settings, *m_values.audioFileURL()); }
    void forgetAside() { m_store.forgetAside(*m_values.audioFileURL()); }

private:
    /// Something that is saved a moment after it was changed.
    struct Late {
        ScheduledTask task;
        bool isSaved = true;
    };
    void saveSoon(Late& late, void (SettingsSaver::*save)());
    void saveStemMix();
    void savePractice();

    Scheduler& m_scheduler;
    SettingsStore& m_store;
    StemSessionStore& m_stemSessions;
    StemMixStore& m_stemMixes;
    PracticeStore& m_practices;
    const AppValues& m_values;
    std::optional<FilePath> m_file;
    ScheduledTask m_settingsSaveTask;
    Late m_stemMix, m_practice;
};

}  // namespace quillet
