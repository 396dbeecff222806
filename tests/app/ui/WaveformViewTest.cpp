#include "app/waveform/WaveformView.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPointingDevice>
#include <QTest>
#include <QWheelEvent>

#include <optional>

namespace quillet {
namespace {

constexpr int inset = WaveformView::sideInset;

/// A waveform of 100 s, 1000 points wide, all of it at one height; whatever it wishes is granted.
struct WaveformViewTest : testing::Test {
    WaveformView view;
    TimeRange region{ 20, 60 };
    double zoom = 1;
    double pan = 0;
    int dragsEnded = 0;

    WaveformViewTest()
    {
        view.resize(1000 + 2 * inset, 200);
        view.setLook({ { Qt::red, Qt::blue }, Qt::white, Qt::green, Qt::green, Qt::black, Qt::black, Qt::black, Qt::black });
        view.setSamples(std::vector<float>(2000, 0.5F));
        view.setDuration(100);
        view.setRegion(region);

        view.onRegionChange([this](const TimeRange& wish) {
            region = wish;
            view.setRegion(region);
        });
        view.onZoomChange([this](double newZoom, double newPan) { setZoom(newZoom, newPan); });
        view.onDragEnded([this] { ++dragsEnded; });
        view.show();
    }

    void setZoom(double newZoom, double newPan)
    {
        zoom = newZoom;
        pan = newPan;
        view.setZoomAndPan(zoom, pan);
    }
    void drag(int from, int to)
    {
        QTest::mousePress(&view, Qt::LeftButton, {}, { inset + from, 150 });
        QTest::mouseMove(&view, { inset + (from + to) / 2, 150 });
        QTest::mouseMove(&view, { inset + to, 150 });
        QTest::mouseRelease(&view, Qt::LeftButton, {}, { inset + to, 150 });
    }
    void wheel(QPoint notches, Qt::KeyboardModifiers modifiers = Qt::NoModifier, int x = 500)
    {
        const QPointF place(inset + x, 100);
        QWheelEvent event(place, view.mapToGlobal(place), {}, notches * 120, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &event);
    }
};

TEST_F(WaveformViewTest, DragsDrawRegionsAndMoveHandles)
{
    struct Case {
        const char* what;
        int from;
        int to;
        TimeRange region;
    };
    for (const Case& test : {
             Case{ "a new one", 700, 900, { 70, 90 } },
             Case{ "from right to left", 900, 700, { 70, 90 } },
             Case{ "beyond the left edge", 300, -50, { 0, 30 } },
             Case{ "beyond the right edge", 700, 1100, { 70, 100 } },
             Case{ "the start handle", 205, 305, { 30.5, 60 } },
             Case{ "past the end", 200, 800, { 59.99, 60 } },
             Case{ "past the start", 600, 100, { 20, 20.01 } },
             Case{ "the end handle", 596, 700, { 20, 70 } },
         }) {
        region = { 20, 60 };
        view.setRegion(region);
        dragsEnded = 0;
        drag(test.from, test.to);
        EXPECT_NEAR(region.start, test.region.start, 1e-9) << test.what;
        EXPECT_NEAR(region.end, test.region.end, 1e-9) << test.what;
        EXPECT_EQ(dragsEnded, 1);
    }
    QTest::mouseClick(&view, Qt::LeftButton, {}, { inset + 400, 150 });
    EXPECT_EQ(region, (TimeRange{ 20, 70 })) << "a click changes nothing";
    // The nearer handle wins, and of two equally near the start's.
    region = { 50, 51 };
    view.setRegion(region);
    drag(505, 400);
    EXPECT_NEAR(region.start, 40, 1e-9);
    EXPECT_EQ(region.end, 51);
}

TEST_F(WaveformViewTest, WheelsPanAndZoom)
{
    wheel({ -1, 0 });
    EXPECT_EQ(pan, 0) << "there is nothing to pan";
    setZoom(2, 0);
    wheel({ -1, 0 });
    EXPECT_EQ(pan, 80);
    wheel({ 0, -1 });
    EXPECT_EQ(pan, 80) << "turned up or down it scrolls the page";
    wheel({ -100, 0 });
    EXPECT_EQ(pan, 1000);
    wheel({ 0, 1 }, Qt::ShiftModifier);
    EXPECT_EQ(pan, 920);
    const double time = view.xToTime(250);
    wheel({ 0, 2 }, Qt::ControlModifier, 250);
    EXPECT_DOUBLE_EQ(zoom, 2.8);
    EXPECT_NEAR(view.xToTime(250), time, 1e-6);
}

TEST_F(WaveformViewTest, AnotherWidthKeepsTheSamePlaceInView)
{
    view.onWidthChange([this](double factor) { setZoom(zoom, pan * factor); });
    setZoom(50, 40'000);
    const double first = view.xToTime(0);
    const double last = view.xToTime(1000);
    for (const int width : { 500, 1700 }) {
        view.resize(width + 2 * inset, 200);
        EXPECT_NEAR(view.xToTime(0), first, 1e-6);
        EXPECT_NEAR(view.xToTime(width), last, 1e-6);
    }
}

TEST_F(WaveformViewTest, APinchKeepsTheMiddleInPlace)
{
    setZoom(4, 1500);
    const double middle = view.xToTime(500);
    const QPointF place(900, 100);
    QNativeGestureEvent event(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(), 2, place, place, place, 0.25,
                              {});
    QApplication::sendEvent(&view, &event);
    EXPECT_DOUBLE_EQ(zoom, 5);
    EXPECT_NEAR(view.xToTime(500), middle, 1e-9);
}

TEST_F(WaveformViewTest, HandlesMoveByKeys)
{
    auto* end = view.findChildren<RegionHandle*>().at(1);
    ASSERT_EQ(end->side(), RegionHandle::Side::end);
    QTest::keyClick(end, Qt::Key_Right);
    EXPECT_NEAR(region.end, 60.01, 1e-9);
    QTest::keyClick(end, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_NEAR(region.end, 59.01, 1e-9);
    QTest::keyClick(end, Qt::Key_End);
    EXPECT_EQ(region.end, 100);
    QTest::keyClick(end, Qt::Key_Home);
    EXPECT_NEAR(region.end, 20.01, 1e-9);
    EXPECT_EQ(dragsEnded, 4);
    EXPECT_EQ(spokenTime(65.489), QStringLiteral("1 minute 5.48 seconds"));
}

TEST_F(WaveformViewTest, PlayHeadIsDrawnOnlyWhilePlaying)
{
    const auto columnsOf = [&](const QColor& color) {
        const QImage image = view.grab().toImage();
        int columns = 0;
        for (int x = 0; x < image.width(); ++x)
            columns += image.pixelColor(x, image.height() - 2) == color ? 1 : 0;
        return columns;
    };
    view.setPlaybackPosition(40);
    EXPECT_EQ(columnsOf(Qt::black), 0);
    view.setPlaying(true);
    EXPECT_EQ(columnsOf(Qt::black), 2);
}

TEST(PlayheadMotionTest, GlidesBetweenReportsAndFollowsJumps)
{
    constexpr double frame = 1.0 / 60;
    PlayheadMotion motion;
    motion.setRate(0.5);
    motion.report(10, 0);
    motion.rest();
    double before = 10;
    for (int i = 1; i <= 120; ++i) {
        // Three reports in 0.15 s, each a few milliseconds early or late.
        if (i % 3 == 0)
            motion.report(10 + 0.5 * i * frame + (i % 2 == 0 ? 0.004 : -0.004), frame);
        motion.advance(frame, 100);
        ASSERT_GT(motion.shown(), before) << "never back";
        ASSERT_NEAR(motion.shown(), 10 + 0.5 * i * frame, 0.003);
        before = motion.shown();
    }
    motion.report(5, 0);
    motion.advance(frame, 100);
    EXPECT_NEAR(motion.shown(), 5, 0.01);
    for (int i = 0; i < 60; ++i)
        motion.advance(frame, 100);
    EXPECT_NEAR(motion.shown(), 5.06, 0.01) << "without reports it waits";
    motion.report(5.1, 0);
    for (int i = 0; i < 6; ++i)
        motion.advance(frame, 5.11);
    EXPECT_LT(motion.shown(), 5.12) << "the region ends there";
}

TEST(WaveformPainterTest, LouderIsHigherAndTheRegionHasItsColour)
{
    std::vector<float> samples(1000, 0.2F);
    std::fill(samples.begin() + 500, samples.end(), 0.9F);
    for (const double scale : { 1.0, 1.5, 2.0 }) {
        QImage image(static_cast<int>(400 * scale), static_cast<int>(100 * scale), QImage::Format_RGB32);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::white);
        QPainter painter(&image);
        paintWaveform(painter, samples, { 10, 400, 1, 0 }, 100, { 0, 5 }, { Qt::red, Qt::blue }, 0, 400);
        const auto height = [&](double x, const QColor& color) {
            int count = 0;
            for (int y = 0; y < image.height(); ++y)
                count += image.pixelColor(static_cast<int>(x * scale), y) == color ? 1 : 0;
            return count / scale;
        };
        EXPECT_NEAR(height(100, Qt::red), 20, 2);
        EXPECT_NEAR(height(300, Qt::blue), 90, 2);
        EXPECT_EQ(height(300, Qt::red), 0);
        // Translucent bars do not darken where they meet.
        image.fill(Qt::white);
        paintWaveform(painter, samples, { 10, 400, 1, 0 }, 100, { 0, 0 }, { Qt::red, QColor(0, 0, 0, 128) }, 0, 400);
        for (int x = image.width() / 2 + 2; x < image.width(); ++x)
            ASSERT_EQ(image.pixelColor(x, image.height() / 2), image.pixelColor(image.width() / 2 + 2, image.height() / 2));
    }
}

}  // namespace
}  // namespace quillet
