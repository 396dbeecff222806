#include "app/download/WebAddress.h"

#include <QString>
#include <QUrl>

#include <algorithm>

namespace quillet {
namespace {

bool isBlank(QChar character) { return character.category() == QChar::Separator_Space || character == QLatin1Char('\t'); }

QStringView withoutBlanksAround(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

bool needsHost(const QString& scheme) { return scheme == QLatin1String("http") || scheme == QLatin1String("https"); }

bool isControl(QChar character)
{
    return character.category() == QChar::Other_Control || character.category() == QChar::Separator_Line
        || character.category() == QChar::Separator_Paragraph;
}

}  // namespace

std::optional<WebAddress> WebAddress::parse(std::string_view typed)
{
    const QString whole = QString::fromUtf8(typed.data(), static_cast<qsizetype>(typed.size()));
    const QString text = withoutBlanksAround(whole).toString();
    if (text.isEmpty() || std::ranges::any_of(text, isControl))
        return std::nullopt;
    const QUrl url(text, QUrl::TolerantMode);
    if (!url.isValid() || (needsHost(url.scheme()) && url.host().isEmpty()))
        return std::nullopt;
    std::string absolute = url.toEncoded().toStdString();
    if (absolute.empty() || absolute.front() == '-')
        return std::nullopt;
    return WebAddress(std::move(absolute));
}

}  // namespace quillet
