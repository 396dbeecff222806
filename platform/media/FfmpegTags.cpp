#include "platform/media/FfmpegTags.h"

#include <cstring>

namespace quillet {
namespace {

/// A scan of a record's sleeve has 10 MB; what is larger stays in the file.
constexpr int mostCoverBytes = 16 * 1024 * 1024;

std::string tag(const AVDictionary* tags, const char* key)
{
    const AVDictionaryEntry* entry = av_dict_get(tags, key, nullptr, 0);
    return entry != nullptr ? tagText(entry->value) : std::string();
}

std::string_view pictureIn(const AVStream& stream)
{
    const AVPacket& packet = stream.attached_pic;
    if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0 || packet.data == nullptr || packet.size > mostCoverBytes)
        return {};
    const std::string_view bytes(reinterpret_cast<const char*>(packet.data), static_cast<std::size_t>(packet.size));
    return pictureExtension(bytes).empty() ? std::string_view() : bytes;
}

/// The front of the sleeve, or whatever picture comes first.
std::shared_ptr<const std::string> coverOf(const AVFormatContext& format)
{
    std::string_view cover;
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        const AVStream& stream = *format.streams[i];
        const std::string_view picture = pictureIn(stream);
        const bool isFront = tag(stream.metadata, "comment") == "Cover (front)";
        if (!picture.empty() && (cover.empty() || isFront))
            cover = picture;
        if (!picture.empty() && isFront)
            break;
    }
    return cover.empty() ? nullptr : std::make_shared<const std::string>(cover);
}

}  // namespace

SongTags tagsOf(const AVFormatContext& format, const AVStream& sound)
{
    // Elsewhere a track's own title is that of the track: a language, say.
    const bool isOgg = std::strcmp(format.iformat->name, "ogg") == 0;
    const auto find = [&](const char* key) {
        std::string text = tag(format.metadata, key);
        return text.empty() && isOgg ? tag(sound.metadata, key) : text;
    };
    SongTags tags{ find("title"), find("artist"), find("album"), coverOf(format) };
    if (tags.artist.empty())
        tags.artist = find("album_artist");
    return tags;
}

}  // namespace quillet
