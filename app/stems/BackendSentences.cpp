#include "app/stems/BackendSentences.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <vector>

namespace quillet {
namespace {

constexpr const char* context = "BackendSentences";

// As backend/stems has them: `tools/update-translations --check` says which are missing or gone.
constexpr const char* sentences[] = {
    QT_TRANSLATE_NOOP("BackendSentences", "Opening the song…"),
    QT_TRANSLATE_NOOP("BackendSentences", "Decoding the song…"),
    QT_TRANSLATE_NOOP("BackendSentences", "Loading the model…"),
    QT_TRANSLATE_NOOP("BackendSentences", "Separating…"),
    QT_TRANSLATE_NOOP("BackendSentences", "Writing the stems…"),
    QT_TRANSLATE_NOOP("BackendSentences", "Done."),
    QT_TRANSLATE_NOOP("BackendSentences", "Fetching the model: %1 of %2"),
    QT_TRANSLATE_NOOP(
        "BackendSentences",
        "The separation was ended by the system, probably for lack of memory. Close other programs and try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "There is not enough memory for the separation. Close other programs and try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The separation ended without saying why (%1). Try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The separation could not be carried out (%1: %2). Try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The separation could not go on (%1). Try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The separation has failed (%1: %2). Try again."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "The dependencies of the separation are not whole (%1). Remove them in the settings, and try again."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "There is no room left for the stems (%1). Make room where they are kept, and try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The model “%1” cannot be loaded (%2). Remove that file, and try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The model “%1” does not make the six stems. Remove that file, and try again."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "The stems cannot be written to %1 (%2). Choose another folder for them, or make this one writable."),
    QT_TRANSLATE_NOOP(
        "BackendSentences",
        "The stems cannot be put into %1 (%2). See whether that folder is still there and writable, and try again."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "This song is being separated already, by another window or program; wait until it is done there."),
    QT_TRANSLATE_NOOP("BackendSentences", "The tool %1 is missing. Install it (Debian's package ffmpeg), and try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "%1 is not a file. Open a song, and separate that."),
    QT_TRANSLATE_NOOP("BackendSentences", "The song %1 cannot be read (%2). Open it again, and try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The song %1 has changed while it was being separated. Try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "The song %1 cannot be opened."),
    QT_TRANSLATE_NOOP("BackendSentences", "There is no sound in %1. Open another song."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "The sound of %1 cannot be decoded. See whether it plays, or try another copy of it."),
    QT_TRANSLATE_NOOP("BackendSentences", "The song could not be resampled (ffmpeg has failed). Try again."),
    QT_TRANSLATE_NOOP("BackendSentences", "A stem could not be resampled (ffmpeg has failed). Try again."),
    QT_TRANSLATE_NOOP(
        "BackendSentences",
        "The folder “%1”, which %2 names, cannot be read (%3). Correct or unset the variable, and start the program again."),
    QT_TRANSLATE_NOOP("BackendSentences", "There is no .safetensors file in “%1”, which %2 names. Put %3 there and try again."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "The model that was fetched is not what it should be. Try again, over another network if need be."),
    QT_TRANSLATE_NOOP("BackendSentences", "The model cannot be kept in “%1” (%2). Make room there, and try again."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "The model (%1) could not be fetched (%2). See to the network, and try again; it goes on from there."),
    QT_TRANSLATE_NOOP("BackendSentences",
                      "The stems take %1, and there are %2 where they are kept. Make room there, and try again."),
};

/// The sentence as it is said: with something in each of its places.
QRegularExpression pattern(const char* sentence)
{
    static const QRegularExpression place(QStringLiteral("%\\d"));
    QStringList between = QString::fromUtf8(sentence).split(place);
    std::ranges::transform(between, between.begin(), [](const QString& words) { return QRegularExpression::escape(words); });
    return QRegularExpression(QRegularExpression::anchoredPattern(between.join(QStringLiteral("(.+)"))));
}

/// All places at once: what is put into one may look like a place itself.
QString filled(const QString& sentence, const QRegularExpressionMatch& said)
{
    static const QRegularExpression place(QStringLiteral("%(\\d)"));
    QString whole;
    qsizetype end = 0;
    for (const QRegularExpressionMatch& found : place.globalMatch(sentence)) {
        whole += sentence.sliced(end, found.capturedStart() - end) + said.captured(found.captured(1).toInt());
        end = found.capturedEnd();
    }
    return whole + sentence.sliced(end);
}

QString translatedLine(const QString& line)
{
    static const auto patterns = [] {
        std::vector<QRegularExpression> made;
        std::ranges::transform(sentences, std::back_inserter(made), pattern);
        return made;
    }();
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        if (const QRegularExpressionMatch match = patterns[i].match(line); match.hasMatch())
            return filled(QCoreApplication::translate(context, sentences[i]), match);
    }
    return line;
}

}  // namespace

QString inUsersLanguage(std::string_view said)
{
    QStringList lines = QString::fromUtf8(said.data(), static_cast<qsizetype>(said.size())).split(QLatin1Char('\n'));
    std::ranges::transform(lines, lines.begin(), translatedLine);
    return lines.join(QLatin1Char('\n'));
}

}  // namespace quillet
