#include "AppCore/TimeRuler.h"
#include "AppCore/WaveformCoordinates.h"
#include "AppCore/WaveformZoomPan.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillet {
namespace {

using namespace WaveformZoomPan;

TEST(WaveformGeometry, TimesAndPlacesMapOntoEachOther)
{
    struct Case {
        WaveformCoordinates view;
        double time;
        double x;
    };
    const WaveformCoordinates whole{ 100, 1000, 1, 0 };
    const WaveformCoordinates zoomed{ 100, 1000, 4, 1500 };
    const Case cases[] = {
        { whole, 25, 250 }, { whole, 0, 0 }, { zoomed, 50, 500 }, { zoomed, 25, -500 }, { zoomed, 100, 2500 }
    };
    for (const Case& c : cases) {
        EXPECT_DOUBLE_EQ(c.view.timeToX(c.time), c.x);
        EXPECT_DOUBLE_EQ(c.view.xToTime(c.x), c.time);
    }
    EXPECT_EQ(whole.xToTime(-10), 0);
    EXPECT_EQ(whole.xToTime(1200), 100);
    EXPECT_EQ(whole.timeToX(110), 1100);
}

TEST(WaveformGeometry, WithoutAFileOrAViewEverythingIsAtTheStart)
{
    const WaveformCoordinates noFile{ 0, 1000, 2, 30 };
    EXPECT_EQ(noFile.timeToX(5), -30);
    EXPECT_EQ(noFile.xToTime(400), 0);
    EXPECT_EQ((WaveformCoordinates{ 100, 0, 2, 30 }).xToTime(400), 0);
    EXPECT_EQ(zoomIn(1, { 0, 1000 }, 50), (ZoomPan{ 2, 0 }));
}

TEST(WaveformGeometry, ZoomStepsKeepTheRegionsStartInView)
{
    const Extent extent{ 100, 1000 };
    EXPECT_EQ(zoomIn(1, extent, 50), (ZoomPan{ 2, 950 }));
    EXPECT_EQ(zoomIn(1, extent, 1), (ZoomPan{ 2, 0 }));
    EXPECT_EQ(zoomIn(1, extent, 99), (ZoomPan{ 2, 1000 }));
    EXPECT_EQ(zoomIn(32, extent, 50), (ZoomPan{ 50, 24950 }));
    EXPECT_EQ(zoomIn(50, extent, 50), (ZoomPan{ 50, 24950 }));
    EXPECT_EQ(zoomOut(8, extent, 50), (ZoomPan{ 4, 1950 }));
    EXPECT_EQ(zoomOut(1.5, extent, 50), (ZoomPan{ 1, 0 }));
    EXPECT_EQ(zoomOut(2, extent, 50), (ZoomPan{ 1, 0 }));
}

TEST(WaveformGeometry, FittingLeavesAMarginOnEachSide)
{
    const Extent extent{ 100, 1000 };
    const auto fitted = fitRegion(10, 20, extent);
    ASSERT_TRUE(fitted);
    EXPECT_EQ(*fitted, (ZoomPan{ 9, 850 }));
    const WaveformCoordinates view{ 100, 1000, fitted->zoom, fitted->pan };
    EXPECT_DOUBLE_EQ(view.timeToX(10), 50);
    EXPECT_DOUBLE_EQ(view.timeToX(20), 950);

    EXPECT_EQ(fitRegion(0, 100, extent), (ZoomPan{ 1, 0 }));
    EXPECT_EQ(fitRegion(50, 50.5, extent), (ZoomPan{ 50, 24950 }));
    EXPECT_FALSE(fitRegion(20, 20, extent));
    EXPECT_FALSE(fitRegion(20, 10, extent));
    EXPECT_FALSE(fitRegion(10, 20, { 0, 1000 }));
}

TEST(WaveformGeometry, PanningStopsAtTheWaveformsEnds)
{
    EXPECT_EQ(panLeft(300, 1000), 0);
    EXPECT_EQ(panLeft(800, 1000), 300);
    EXPECT_EQ(panRight({ 2, 900 }, 1000), 1000);
    EXPECT_EQ(panRight({ 3, 900 }, 1000), 1400);
    EXPECT_EQ(panRight({ 1, 0 }, 1000), 0);
}

TEST(WaveformGeometry, MagnifyingKeepsWhatIsUnderTheAnchor)
{
    const ZoomPan wide = magnified({ 4, 1500 }, 0.5, 300, 1000);
    EXPECT_EQ(wide.zoom, 6);
    EXPECT_DOUBLE_EQ((WaveformCoordinates{ 100, 1000, 6, wide.pan }.xToTime(300)),
                     (WaveformCoordinates{ 100, 1000, 4, 1500 }.xToTime(300)));
    EXPECT_EQ(magnified({ 40, 0 }, 0.5, 500, 1000).zoom, 50);
    EXPECT_EQ(magnified({ 1.5, 200 }, -0.9, 500, 1000), (ZoomPan{ 1, 0 }));
    EXPECT_EQ(magnified({ 2, 1000 }, 0.5, 0, 1000).pan, 1500);
    EXPECT_EQ(magnified({ 2, 0 }, 0.5, 0, 1000).pan, 0);
}

TEST(WaveformGeometry, RulerCountsInStepsThatCanBeReadAtEveryZoom)
{
    struct Case {
        WaveformCoordinates view;
        std::vector<std::string> labels;
    };
    const std::vector<Case> cases{
        { { 165, 1000, 1, 0 }, { "0:00", "0:20", "0:40", "1:00", "1:20", "1:40", "2:00", "2:20", "2:40" } },
        { { 59999.999, 1000, 1, 0 },
          { "0:00", "120:00", "240:00", "360:00", "480:00", "600:00", "720:00", "840:00", "960:00" } },
        { { 100, 1000, 50, 30'000 },
          { "1:00.0", "1:00.2", "1:00.4", "1:00.6", "1:00.8", "1:01.0", "1:01.2", "1:01.4", "1:01.6", "1:01.8", "1:02.0" } },
        { { 0.5, 1000, 1, 0 },
          { "0:00.00", "0:00.05", "0:00.10", "0:00.15", "0:00.20", "0:00.25", "0:00.30", "0:00.35", "0:00.40", "0:00.45",
            "0:00.50" } },
        { { 0, 1000, 1, 0 }, {} },
        { { 10, 0, 1, 0 }, {} },
    };
    for (const Case& test : cases) {
        std::vector<std::string> labels;
        double previous = -1;
        for (const RulerTick& tick : rulerTicks(test.view, 90)) {
            EXPECT_GT(tick.x, previous);
            previous = tick.x;
            if (!tick.label.empty())
                labels.push_back(tick.label);
        }
        EXPECT_EQ(labels, test.labels);
        EXPECT_LE(previous, 1000.001);
    }
}

}  // namespace
}  // namespace quillet
