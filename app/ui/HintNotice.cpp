#include "app/ui/HintNotice.h"

#include "app/ui/settings/KeySettings.h"

#include <QPushButton>

namespace quillet {

HintNotice::HintNotice(Hints& hints, const KeyMap& keys, const ThemeSource& source, QWidget* parent)
    : Notice(source, {}, parent),
      m_hints(hints),
      m_keys(keys)
{
    connect(&addButton(tr("Got It")), &QAbstractButton::clicked, &hints, &Hints::dismiss);
    connect(&hints, &Hints::changed, this, &HintNotice::sync);
    connect(&keys, &KeyMap::changed, this, &HintNotice::sync);
    sync();
}

void HintNotice::sync()
{
    const auto key = [this](CommandId id) {
        const auto chord = m_keys.present(commandOf(id));
        return chord ? chordText(*chord) : QString();
    };
    const QStringList sentences{
        tr("Drag over the waveform to choose a bar, then press %1.").arg(key(CommandId::playPause)),
        tr("Click the speed and type one such as 60, or press %1 and %2.")
            .arg(key(CommandId::decreaseSpeed), key(CommandId::increaseSpeed)),
        tr("%1 and %2 mark a region while you listen.").arg(key(CommandId::markRegionStart), key(CommandId::markRegionEnd)),
    };
    setSentence(sentences.join(QLatin1Char('\n')));
    setVisible(m_hints.areShown());
}

}  // namespace quillet
