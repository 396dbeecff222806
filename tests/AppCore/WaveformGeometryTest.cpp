#include "AppCore/WaveformCoordinates.h"
#include "AppCore/WaveformZoomPan.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace quillet
