#include "app/core/SettingsSaver.h"

#include <utility>

namespace quillet {

void SettingsSaver::adoptFile() { m_file = m_values.audioFileURL(); }

void SettingsSaver::saveSoon()
{
    const auto& url = m_values.audioFileURL();
    const bool belongToAnother = m_values.loadingState().stage == LoadingState::Stage::loading && m_file != url;
    if (!url || belongToAnother)
        return;
    m_settingsSaveTask = m_scheduler.after(delaySeconds, [this, url = *url] { m_store.save(m_values.currentSettings(), url); });
}

void SettingsSaver::saveStemSession()
{
    if (m_values.audioFileURL() && m_values.stemSession())
        m_stemSessions.save(*m_values.stemSession(), *m_values.audioFileURL());
}

void SettingsSaver::saveStemMixSoon()
{
    m_isStemMixSaved = false;
    m_stemMixSaveTask = m_scheduler.after(delaySeconds, [this] { saveStemMix(); });
}

void SettingsSaver::saveStemMix()
{
    if (!std::exchange(m_isStemMixSaved, true) && m_values.audioFileURL())
        m_stemMixes.save(m_values.stemMix(), *m_values.audioFileURL());
}

void SettingsSaver::saveNow()
{
    saveStemMix();
    if (m_values.audioFileURL() && m_values.isLoaded())
        m_store.save(m_values.currentSettings(), *m_values.audioFileURL());
}

}  // namespace quillet
