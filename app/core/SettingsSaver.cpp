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

void SettingsSaver::saveSoon(Late& late, void (SettingsSaver::*save)())
{
    late.isSaved = false;
    late.task = m_scheduler.after(delaySeconds, [this, save] { (this->*save)(); });
}

void SettingsSaver::saveStemMixSoon() { saveSoon(m_stemMix, &SettingsSaver::saveStemMix); }

void SettingsSaver::savePracticeSoon() { saveSoon(m_practice, &SettingsSaver::savePractice); }

void SettingsSaver::saveStemMix()
{
    if (!std::exchange(m_stemMix.isSaved, true) && m_values.audioFileURL())
        m_stemMixes.save(m_values.stemMix(), *m_values.audioFileURL());
}

void SettingsSaver::savePractice()
{
    if (!std::exchange(m_practice.isSaved, true) && m_values.audioFileURL())
        m_practices.save(m_values.practice(), *m_values.audioFileURL());
}

void SettingsSaver::saveNow()
{
    saveStemMix();
    savePractice();
    if (m_values.audioFileURL() && m_values.isLoaded())
        m_store.save(m_values.currentSettings(), *m_values.audioFileURL());
}

}  // namespace quillet
