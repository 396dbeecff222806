#include "app/ui/WaveformPanel.h"

#include "app/waveform/WaveformView.h"
#include "platform/media/FfmpegAmplitudeReader.h"
#include "tests/app/ui/WindowRig.h"
#include "tests/support/AudioFixtures.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace quillet {
namespace {

/// A panel whose view has a waveform 1000 points wide.
struct WaveformPanelTest : testing::Test, WindowRig {
    FfmpegAmplitudeReaderOpener files;
    WaveformPanel panel{ *state, theme, { { files, background, scheduler }, follow } };
    WaveformView& view = *panel.findChild<WaveformView*>();

    WaveformPanelTest()
        : WindowRig(100)
    {
        panel.resize(1000 + 2 * WaveformView::sideInset, 400);
        panel.show();
    }
    [[nodiscard]] double secondsAtTheLeft() const { return view.xToTime(0); }
    void playAt(double seconds) { state->setPlaybackPosition(seconds); }

    /// Rows of pixels that are not ground, for every column of the waveform.
    [[nodiscard]] std::vector<int> heights()
    {
        const QImage image = view.grab().toImage();
        const QColor ground = theme.theme().card;
        std::vector<int> rows(1000);
        for (int x = 0; x < 1000; ++x)
            for (int y = WaveformView::rulerHeight; y < image.height(); ++y)
                rows[static_cast<std::size_t>(x)] += image.pixelColor(WaveformView::sideInset + x, y) != ground ? 1 : 0;
        return rows;
    }
};

TEST_F(WaveformPanelTest, AClickIsInItsColumnAtTheHighestZoom)
{
    constexpr int seconds = 20;
    constexpr std::size_t place = 12 * 48'000 + 777;
    TestSignal signal{ 48'000, 2, std::vector<float>(std::size_t{ 2 } * 48'000 * seconds) };
    // On one channel alone, and far from the loudest there could be.
    signal.samples[2 * place] = 0.25F;
    for (const char* name : { "click.wav", "click.flac", "click.mp3", "click.m4a", "click.opus" }) {
        SCOPED_TRACE(name);
        const FilePath file = tools / name;
        encodeAudio(signal, file, {});
        state->setZoomLevel(1);
        state->setAudioFileURL(file);
        state->setAudioDuration(seconds);
        state->setZoomLevel(50);
        state->setPanOffset(29'600);
        EXPECT_NEAR(std::ranges::max(heights()), (view.height() - WaveformView::rulerHeight) / 2.0, 2)
            << "bars until it is known";
        finishWork();
        const auto decoded = decodeWithFfmpeg(file);
        const auto loudest = std::ranges::max_element(decoded, {}, [](float sample) { return std::abs(sample); });
        const auto sample = loudest - decoded.begin();
        const auto frame = static_cast<double>(sample - sample % 2) / 2;
        ASSERT_NEAR(frame, static_cast<double>(place), 60);
        const auto columns = heights();
        const auto highest = std::ranges::max_element(columns);
        const double column = frame / (static_cast<double>(decoded.size()) / 2) * 50'000 - 29'600;
        EXPECT_NEAR(static_cast<double>(highest - columns.begin()) + 0.5, column, 0.7);
        EXPECT_GE(*highest, (view.height() - WaveformView::rulerHeight) / 2 - 1) << "the loudest sample, on its side";
        EXPECT_LE(columns[200], 2) << "silence";
    }
}

TEST_F(WaveformPanelTest, TheViewFollowsThePlayHeadPageByPage)
{
    state->setZoomLevel(10);
    state->setIsPlaying(true);
    playAt(10.1);
    EXPECT_EQ(secondsAtTheLeft(), 0) << "not before it is wished";
    EXPECT_FALSE(FollowChoice(defaults).isOn());
    buttonIn(panel, "Follow").click();
    EXPECT_TRUE(FollowChoice(defaults).isOn()) << "remembered";
    EXPECT_NEAR(secondsAtTheLeft(), 9.1, 1e-9) << "at once, a tenth of the view being overlap";
    playAt(19);
    EXPECT_NEAR(secondsAtTheLeft(), 9.1, 1e-9);
    playAt(19.2);
    EXPECT_NEAR(secondsAtTheLeft(), 18.2, 1e-9);
    playAt(5);
    EXPECT_NEAR(secondsAtTheLeft(), 4, 1e-9) << "back at a loop's joint";
    playAt(99);
    EXPECT_NEAR(secondsAtTheLeft(), 90, 1e-9);
    state->setIsPlaying(false);
    playAt(5);
    EXPECT_NEAR(secondsAtTheLeft(), 90, 1e-9) << "only what plays";
    state->setIsPlaying(true);
    EXPECT_NEAR(secondsAtTheLeft(), 4, 1e-9);
}

TEST_F(WaveformPanelTest, TheHandGoesBeforeThePlayHead)
{
    follow.toggle();
    state->setZoomLevel(10);
    state->setIsPlaying(true);
    playAt(3);
    QTest::mousePress(&view, Qt::LeftButton, {}, { 500, 200 });
    playAt(11);
    EXPECT_EQ(secondsAtTheLeft(), 0) << "something is dragged";
    QTest::mouseRelease(&view, Qt::LeftButton, {}, { 500, 200 });
    playAt(11.1);
    EXPECT_NEAR(secondsAtTheLeft(), 10.1, 1e-9);
    for (int i = 0; i < 4; ++i)
        panel.panRight();
    playAt(20);
    EXPECT_NEAR(secondsAtTheLeft(), 30.1, 1e-9) << "the page that was left is not over";
    playAt(20.2);
    EXPECT_NEAR(secondsAtTheLeft(), 19.2, 1e-9);
    panel.panLeft();
    panel.panRight();
    playAt(29.3);
    EXPECT_NEAR(secondsAtTheLeft(), 28.3, 1e-9) << "it was in view again";
}

}  // namespace
}  // namespace quillet
