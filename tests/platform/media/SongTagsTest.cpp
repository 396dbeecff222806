#include "platform/media/SongTags.h"

#include "platform/media/FfmpegAudioFile.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace quillet {
namespace {

TEST(SongTagsTest, TextIsUtf8InOneLineWhateverTheFileHas)
{
    struct Case {
        std::string raw;
        std::string expected;
    };
    const Case cases[] = {
        { "Étude No. 3", "Étude No. 3" },
        { "caf\xE9 \x93live\x94", "café “live”" },
        // A field of thirty bytes has cut the last character in two; a Western text ends with what looks like half a one.
        { "Dvo\xC5\x99\xC3\xA1k \xC5", "Dvořák" },
        { "Caf\xE9", "Café" },
        { "\xED\xA0\x80", "í €" },
        { " two\r\n\tlines\x01\xC2\x85 \xE2\x80\xA8 ", "two lines" },
        { "\xEF\xBB\xBFsafe\xE2\x80\xAE.gpj", "safe.gpj" },
        { std::string("first\0second", 12), "first" },
        { " \n", "" },
        { std::string(200, 'a'), std::string(200, 'a') },
        { "𝄞" + std::string(5000, 'a'), "𝄞" + std::string(198, 'a') + "…" },
    };
    for (const Case& c : cases)
        EXPECT_EQ(tagText(c.raw), c.expected) << c.raw;
}

TEST(SongTagsTest, EveryContainerGivesItsTagsAndItsCover)
{
    const TemporaryFolder folder;
    encodeAudio(livelySignal(44'100, 2, 0.5), folder / "plain.wav", {});
    runFfmpeg({ "-f", "lavfi", "-i", "testsrc2=s=32x32", "-frames:v", "1", folder / "cover.png" });
    const std::vector<std::string> tags{ "-metadata", "title=Étude", "-metadata", "artist=Żak", "-metadata", "album=Studies" };
    for (const char* name : { "song.mp3", "song.m4a", "song.flac", "song.ogg", "song.opus", "song.wav" }) {
        SCOPED_TRACE(name);
        const bool hasCover =
            std::string_view(name).find(".m") != std::string_view::npos || std::string_view(name).ends_with("flac");
        std::vector<std::string> arguments{ "-i", folder / "plain.wav" };
        if (hasCover)
            arguments.insert(
                arguments.end(),
                { "-i", folder / "cover.png", "-map", "0", "-map", "1", "-c:v", "copy", "-disposition:v", "attached_pic" });
        arguments.insert(arguments.end(), tags.begin(), tags.end());
        arguments.push_back(folder / name);
        runFfmpeg(arguments);
        const auto file = FfmpegAudioFileOpener().open(folder / name);
        ASSERT_TRUE(file);
        const SongTags read = (*file)->tags();
        EXPECT_EQ(read.title + "|" + read.artist + "|" + read.album, "Étude|Żak|Studies");
        EXPECT_EQ(read.cover ? *read.cover : "", hasCover ? readBytes(folder / "cover.png") : "");
    }
}

}  // namespace
}  // namespace quillet
