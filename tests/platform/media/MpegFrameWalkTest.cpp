#include "platform/media/MpegFrameWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace quillet {
namespace {

using namespace std::string_literals;

/// An MPEG-1 layer III frame of 128 kbit/s at 44.1 kHz: 417 bytes, or 418 with padding.
std::string frame(bool padded = false)
{
    std::string bytes(padded ? 418 : 417, '\xAA');
    bytes.replace(0, 4, "\xFF\xFB\x90\x64"s);
    if (padded)
        bytes[2] = '\x92';
    return bytes;
}

MpegFrames walk(const std::string& file, std::int64_t from = 0)
{
    const auto bytesAt = [&](std::int64_t offset, std::span<unsigned char> bytes) {
        const std::size_t begin = std::min(static_cast<std::size_t>(offset), file.size());
        const std::size_t count = std::min(bytes.size(), file.size() - begin);
        std::memcpy(bytes.data(), file.data() + begin, count);
        return count;
    };
    return walkMpegFrames(bytesAt, from);
}

TEST(MpegFrameWalkTest, HopsFromFrameToFrameUpToTheEnd)
{
    const auto plain = walk("junk" + frame() + frame(true) + frame(), 4);
    EXPECT_EQ(plain.offsets, (std::vector<std::int64_t>{ 4, 421, 839 }));
    EXPECT_TRUE(plain.reachesTheEnd);

    std::string many;
    for (int i = 0; i < 2000; ++i)
        many += frame(i % 3 == 0);
    EXPECT_EQ(walk(many).offsets.size(), 2000) << "frames lie across the ends of the buffer";
}

TEST(MpegFrameWalkTest, OnlyTagsAndPartsOfFramesMayFollow)
{
    struct Case {
        const char* rule;
        std::string tail;
        bool isTheEnd;
    };
    const std::string otherRate = "\xFF\xFB\x94\x64"s;
    for (const Case& test : {
             Case{ "a frame that is cut off is not counted", frame().substr(0, 100), true },
             Case{ "ID3v1", "TAG" + std::string(125, ' '), true },
             Case{ "APE", "APETAGEX" + std::string(24, '\0'), true },
             Case{ "damage is not the end", "\0\0\0\0"s + frame(), false },
             Case{ "nor is another sample rate", otherRate + std::string(500, '\xAA'), false },
             Case{ "nor a frame of unknown length", "\xFF\xFB\x00\x64"s + std::string(500, '\xAA'), false },
         }) {
        const auto frames = walk(frame() + frame() + test.tail);
        EXPECT_EQ(frames.offsets.size(), 2) << test.rule;
        EXPECT_EQ(frames.reachesTheEnd, test.isTheEnd) << test.rule;
    }
    EXPECT_TRUE(walk("").offsets.empty());
}

}  // namespace
}  // namespace quillet
