#include "platform/base/Require.h"
#include "platform/media/FfmpegAudioFile.h"
#include "tests/support/AudioFixtures.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace quillet {
namespace {

class FfmpegAudioFileOpenerTest : public testing::Test {
protected:
    /// What is said of a file that cannot be opened, its folder left out; nothing for one that can.
    std::string complaint(const FilePath& path)
    {
        const auto file = m_opener.open(path);
        return file ? "" : describe(file.error(), path.filename());
    }

    std::string wavOf(double seconds)
    {
        encodeAudio(livelySignal(8000, 1, seconds), m_folder / "made.wav", {});
        return readBytes(m_folder / "made.wav");
    }

    TemporaryFolder m_folder;
    FfmpegAudioFileOpener m_opener;
    const std::string m_wav = wavOf(0.2);
};

TEST_F(FfmpegAudioFileOpenerTest, EveryKindOfUselessFileIsNamed)
{
    const auto file = [&](const char* name, std::string_view bytes) {
        writeBytes(m_folder / name, bytes);
        return complaint(m_folder / name);
    };
    EXPECT_EQ(complaint(m_folder / "gone.mp3"), "“gone.mp3” does not exist.");
    EXPECT_EQ(complaint(""), "“” does not exist.");
    EXPECT_EQ(complaint(m_folder.path()), describe(AudioFileError::notAFile, m_folder.path().filename()));
    EXPECT_EQ(complaint("/dev/zero"), "“zero” is not a file: choose an audio file.");
    REQUIRE(mkfifo((m_folder / "pipe.wav").c_str(), 0600) == 0);
    EXPECT_EQ(complaint(m_folder / "pipe.wav"), "“pipe.wav” is not a file: choose an audio file.");
    std::filesystem::create_symlink(m_folder / "gone.mp3", m_folder / "link.mp3");
    EXPECT_EQ(complaint(m_folder / "link.mp3"), "“link.mp3” does not exist.");

    EXPECT_EQ(file("empty.mp3", ""), "“empty.mp3” is empty: there is no sound in it.");
    EXPECT_EQ(file("silent.wav", wavOf(0)), "“silent.wav” is empty: there is no sound in it.");
    for (const char* name : { "text.mp3", "text.wav", "text.m4a", "text.flac", "text.ogg", "text.aac", "text" })
        EXPECT_EQ(file(name, "Buy milk.\nThen practise.\n"), describe(AudioFileError::notAudio, name));
    EXPECT_EQ(file("noughts.mp3", std::string(100'000, '\0')), "“noughts.mp3” is not an audio file of a known kind.");
    EXPECT_EQ(file("head.wav", m_wav.substr(0, 20)), "“head.wav” is not an audio file of a known kind.");

    runFfmpeg({ "-f", "lavfi", "-i", "testsrc2=d=0.2:s=64x48", "-c:v", "mpeg4", m_folder / "film.mp4" });
    EXPECT_EQ(complaint(m_folder / "film.mp4"), "“film.mp4” has no audio track.");
    runFfmpeg({ "-f", "lavfi", "-i", "testsrc2=d=0.2:s=64x48", "-frames:v", "1", m_folder / "picture.png" });
    EXPECT_EQ(complaint(m_folder / "picture.png"), "“picture.png” has no audio track.");
}

TEST_F(FfmpegAudioFileOpenerTest, FileOfAnotherUserIsNotPermitted)
{
    const FilePath path = m_folder / "locked.wav";
    writeBytes(path, m_wav);
    REQUIRE(chmod(path.c_str(), 0) == 0);
    const uid_t self = geteuid();
    constexpr uid_t nobody = 65534;
    if (self == 0)
        REQUIRE(chmod(m_folder.path().c_str(), 0755) == 0 && seteuid(nobody) == 0);
    const std::string said = complaint(path);
    if (self == 0)
        REQUIRE(seteuid(self) == 0);
    EXPECT_EQ(said, "“locked.wav” may not be read by you: change its permissions first.");
}

TEST_F(FfmpegAudioFileOpenerTest, NamesAreBytesAndNeverAddresses)
{
    REQUIRE(chdir(m_folder.path().c_str()) == 0);
    for (const char* name : { "http:foo.wav", "concat:a|b.wav", "-x.wav", "pipe:0", "file:x", "%03d.wav", "\xFF\xFE.wav",
                              "Übung 3.mp3", "wav.txt", "two\nlines" }) {
        writeBytes(name, m_wav);
        const auto file = m_opener.open(name);
        ASSERT_TRUE(file.has_value()) << name << ": " << describe(file.error(), name);
        EXPECT_EQ((*file)->length(), 1600) << name;
    }
}

TEST_F(FfmpegAudioFileOpenerTest, FilesThatPointToOthersOpenNoOther)
{
    writeBytes(m_folder / "target.wav", m_wav);
    const std::string target = m_folder / "target.wav";
    const std::vector<std::pair<const char*, std::string>> cases{
        { "list.ffconcat", "ffconcat version 1.0\nfile target.wav\nfile '" + target + "'\n" },
        { "list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nfile://" + target + "\n#EXT-X-ENDLIST\n" },
        { "list.m3u", target + "\n" },
        { "session.sdp", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 50000 RTP/AVP 0\n" },
    };
    for (const auto& [name, text] : cases) {
        writeBytes(m_folder / name, text);
        EXPECT_EQ(complaint(m_folder / name), describe(AudioFileError::notAudio, name));
    }
}

TEST_F(FfmpegAudioFileOpenerTest, FirstOfSeveralTracksPlays)
{
    encodeAudio(livelySignal(8000, 1, 0.5), m_folder / "1.wav", {});
    encodeAudio(livelySignal(48'000, 2, 0.5), m_folder / "2.wav", {});
    runFfmpeg({ "-i", m_folder / "1.wav", "-i", m_folder / "2.wav", "-map", "0", "-map", "1", "-c:a", "flac",
                m_folder / "both.mka" });
    const auto file = m_opener.open(m_folder / "both.mka");
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ((*file)->sampleRate(), 8000);
    EXPECT_EQ((*file)->length(), 4000);
}

}  // namespace
}  // namespace quillet
