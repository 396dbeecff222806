#include "app/stems/SeparationOutput.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringDecoder>
#include <QStringList>

#include <algorithm>
#include <optional>

namespace quillet {
namespace {

constexpr int percent = 100;

std::optional<QString> decoded(std::string_view bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
    return decoder.hasError() ? std::nullopt : std::optional(std::move(text));
}

std::optional<ProgressMessage> messageIn(const QString& line)
{
    const QJsonDocument document = QJsonDocument::fromJson(line.toUtf8());
    const QJsonObject object = document.object();
    if (!std::ranges::all_of(object, [](const auto& value) { return value.isString(); })
        || !object.contains(QLatin1String("message")))
        return std::nullopt;
    return ProgressMessage{ object.value(QLatin1String("message")).toString().toStdString() };
}

/// The digits right before the first percent sign.
std::optional<ProgressFraction> fractionIn(const QString& line)
{
    const qsizetype sign = line.indexOf(QLatin1Char('%'));
    qsizetype begin = std::max<qsizetype>(sign, 0);
    while (begin > 0 && line[begin - 1].isDigit())
        --begin;
    int value = 0;
    for (qsizetype i = begin; i < sign; ++i) {
        value = 10 * value + line[i].digitValue();
        if (value > percent)
            return std::nullopt;
    }
    return sign > begin ? std::optional(static_cast<double>(value) / percent) : std::nullopt;
}

}  // namespace

std::vector<ProgressUpdate> progressIn(std::string_view chunk)
{
    auto text = decoded(chunk);
    if (!text)
        return {};
    text->replace(QLatin1Char('\r'), QLatin1Char('\n'));
    std::vector<ProgressUpdate> updates;
    for (const QString& line : text->split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        if (const auto message = messageIn(line))
            updates.emplace_back(*message);
        else if (const auto fraction = fractionIn(line))
            updates.emplace_back(*fraction);
    }
    return updates;
}

std::expected<std::map<std::string, FilePath>, std::string> separationResult(int exitStatus, std::string_view output,
                                                                             std::string_view errorOutput)
{
    const QString said = decoded(output).value_or(QString());
    const QJsonObject result = QJsonDocument::fromJson(said.toUtf8()).object();
    const QJsonValue stems = result.value(QLatin1String("stems"));
    if (exitStatus == 0 && result.value(QLatin1String("success")).toBool() && stems.isObject()) {
        const QJsonObject paths = stems.toObject();
        if (std::ranges::all_of(paths, [](const auto& path) { return path.isString(); })) {
            std::map<std::string, FilePath> files;
            for (auto it = paths.begin(); it != paths.end(); ++it)
                files.emplace(it.key().toStdString(), it.value().toString().toStdString());
            return files;
        }
    }
    std::string message = trimmedText(output);
    const std::string errors = trimmedText(errorOutput);
    message += (message.empty() || errors.empty() ? "" : "\n") + errors;
    if (message.empty())
        message = QCoreApplication::translate("StemSeparator", "Separation failed (exit %1)").arg(exitStatus).toStdString();
    return std::unexpected(message);
}

std::string trimmedText(std::string_view bytes) { return decoded(bytes).value_or(QString()).trimmed().toStdString(); }

}  // namespace quillet
