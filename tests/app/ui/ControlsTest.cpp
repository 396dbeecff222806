// The controls of the player, used through the events that a user makes.

#include "app/ui/EQView.h"
#include "app/ui/LoopControl.h"
#include "app/ui/PitchControl.h"
#include "app/ui/RegionControls.h"
#include "app/ui/SpeedControl.h"
#include "app/ui/TransportView.h"
#include "app/ui/controls/Drawer.h"
#include "app/ui/controls/Switch.h"
#include "app/ui/controls/TimePickerField.h"
#include "app/ui/controls/ValueField.h"
#include "app/ui/controls/VerticalSlider.h"
#include "tests/app/ui/WindowRig.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <array>
#include <cmath>
#include <string>
#include <tuple>

namespace quillet {
namespace {

struct ControlsTest : testing::Test {
    WindowRig rig{ 100 };
    AppState& state = *rig.state;
    QWidget window;
    QVBoxLayout* column = new QVBoxLayout(&window);

    template <typename Control> Control* show(Control* control)
    {
        column->addWidget(control);
        window.show();
        window.activateWindow();
        static_cast<void>(QTest::qWaitForWindowActive(&window));
        if (QWidget* focused = QApplication::focusWidget())
            focused->clearFocus();
        return control;
    }

    template <typename Widget> Widget* named(const char* name)
    {
        for (Widget* widget : window.findChildren<Widget*>())
            if (widget->accessibleName() == QLatin1String(name) || widget->property("text").toString() == QLatin1String(name))
                return widget;
        return nullptr;
    }
    void click(const char* name) { QTest::mouseClick(named<QAbstractButton>(name), Qt::LeftButton); }
    std::string shown(const char* name) { return named<ValueField>(name)->text().toStdString(); }
    void enter(const char* name, const char* text)
    {
        auto* field = named<ValueField>(name);
        field->setFocus();
        EXPECT_EQ(field->text(), QString());
        QTest::keyClicks(field, QString::fromUtf8(text));
        QTest::keyClick(field, Qt::Key_Return);
        EXPECT_FALSE(field->hasFocus());
    }
};

TEST_F(ControlsTest, SpeedIsTypedAndStepped)
{
    show(new SpeedControl(state, rig.theme));
    constexpr const char* field = "Speed in percent";
    struct Case {
        const char* typed;
        double speed;
        const char* shown;
    };
    for (const Case& test : { Case{ "80", 80, "80%" }, Case{ "+10", 90, "90%" }, Case{ "abc", 90, "90%" },
                              Case{ "99.6", 99.6, "99%" }, Case{ "-1000", 5, "5%" } }) {
        enter(field, test.typed);
        EXPECT_EQ(state.speed(), test.speed) << test.typed;
        EXPECT_EQ(shown(field), test.shown);
        EXPECT_DOUBLE_EQ(rig.engine.timePitch().rate(), test.speed / 100);
    }
    EXPECT_TRUE(named<QPushButton>("Reset speed")->isEnabled());
    click("Reset speed");
    EXPECT_EQ(state.speed(), 100);
    EXPECT_FALSE(named<QPushButton>("Reset speed")->isEnabled());

    click("Speed step 25%");
    for (const auto& [from, to, way] : { std::tuple(100, 75, "Decrease speed"), std::tuple(290, 300, "Increase speed"),
                                         std::tuple(9, 5, "Decrease speed") }) {
        state.setSpeed(from);
        click(way);
        EXPECT_EQ(state.speed(), to);
    }

    click("Speed step Custom");
    constexpr const char* custom = "Custom speed step in percent";
    for (const char* wrong : { "0", "100.5", "ten", " 3" }) {
        enter(custom, wrong);
        EXPECT_EQ(state.speedStep(), 25) << wrong;
    }
    enter(custom, "0.5");
    EXPECT_EQ(state.speedStep(), 0.5);
    state.setSpeedStep(2);
    EXPECT_TRUE(named<QPushButton>("Speed step 2%")->isChecked());
    click("Speed step Custom");
    enter(custom, "5");
    EXPECT_TRUE(named<QPushButton>("Speed step 5%")->isChecked()) << "whoever typed it";

    // Escape forgets what was typed, the loss of the focus does not.
    auto* speed = named<ValueField>(field);
    speed->setFocus();
    QTest::keyClicks(speed, QStringLiteral("60"));
    QTest::keyClick(speed, Qt::Key_Escape);
    EXPECT_EQ(state.speed(), 5);
    speed->setFocus();
    QTest::keyClicks(speed, QStringLiteral("60"));
    speed->clearFocus();
    EXPECT_EQ(state.speed(), 60);
}

TEST_F(ControlsTest, PitchMovesByACent)
{
    show(new PitchControl(state, rig.theme));
    enter("Pitch in cents", "300");
    EXPECT_EQ(shown("Pitch in cents"), "+300");
    click("Pitch up 1 cent");
    enter("Pitch in cents", "-101");
    EXPECT_EQ(state.pitch(), 200);
    EXPECT_EQ(rig.engine.timePitch().pitch(), 200);
    for (const auto& [from, to, way] :
         { std::tuple(1199.5, 1200, "Pitch up 1 cent"), std::tuple(-1199.5, -1200, "Pitch down 1 cent") }) {
        state.setPitch(from);
        click(way);
        EXPECT_EQ(state.pitch(), to);
    }
    click("Reset pitch");
    EXPECT_EQ(shown("Pitch in cents"), "0");
    EXPECT_FALSE(named<QPushButton>("Reset pitch")->isEnabled());
}

TEST_F(ControlsTest, RegionFieldsKeepTheRegionInOrder)
{
    show(new RegionControls(state, rig.theme));
    const auto start = [&] {
        return shown("Region start, minutes") + shown("Region start, seconds") + shown("Region start, milliseconds");
    };
    state.setRegion({ 61.2345, 100 });
    EXPECT_EQ(start(), "00101234");
    state.setRegion({ 61.2345, 80 });
    enter("Region start, minutes", "2");
    EXPECT_EQ(state.regionStart(), 80);
    EXPECT_EQ(start(), "00120000");
    enter("Region end, seconds", "75");
    EXPECT_EQ(state.regionEnd(), 100) << "59, then at most the file's length";
    enter("Region start, seconds", "-3");
    EXPECT_EQ(state.regionStart(), 60);
    enter("Region start, seconds", "12a");
    EXPECT_EQ(state.regionStart(), 60);
    click("Increase Region start, milliseconds");
    EXPECT_DOUBLE_EQ(state.regionStart(), 60.001);
    state.togglePlayPause();
    click("Increase Region start, seconds");
    EXPECT_EQ(rig.starts(), 2) << "what plays starts over";
}

TEST_F(ControlsTest, LoopHidesItsDelayAndKeepsItsPlace)
{
    auto* loop = show(new LoopControl(state, rig.theme));
    const int width = loop->sizeHint().width();
    enter("Loop delay, seconds", "100");
    EXPECT_EQ(state.loopDelaySeconds(), 99);
    named<ValueField>("Loop delay, milliseconds")->setFocus();
    QTest::keyClick(named<ValueField>("Loop delay, milliseconds"), Qt::Key_Up);
    EXPECT_EQ(state.loopDelayMilliseconds(), 1);
    click("Loop");
    EXPECT_FALSE(state.loopEnabled());
    EXPECT_FALSE(named<ValueField>("Loop delay, seconds")->isVisible());
    EXPECT_EQ(loop->sizeHint().width(), width);

    // An assistive program's action is a click.
    auto* access = QAccessible::queryAccessibleInterface(named<Switch>("Loop"));
    EXPECT_EQ(access->role(), QAccessible::CheckBox);
    EXPECT_FALSE(access->state().checked);
    access->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(state.loopEnabled());
    EXPECT_TRUE(access->state().checked);
    EXPECT_EQ(access->text(QAccessible::Name), QStringLiteral("Loop"));
}

TEST_F(ControlsTest, ADrawerSlidesToTheHeightOfItsContentAndShut)
{
    auto* content = new QWidget;
    content->setMinimumHeight(200);
    (new QVBoxLayout(content))->addSpacing(200);
    auto* drawer = show(new Drawer(content));
    const int height = content->sizeHint().height();
    EXPECT_EQ(drawer->sizeHint().height(), 0);
    for (const bool isOpen : { true, false }) {
        drawer->setOpen(isOpen);
        EXPECT_EQ(content->isVisible(), isOpen);
        const int end = isOpen ? height : 0;
        EXPECT_NE(drawer->sizeHint().height(), end) << "jumped";
        EXPECT_TRUE(QTest::qWaitFor([&] { return drawer->sizeHint().height() == end; }));
        EXPECT_EQ(content->height(), height) << "squeezed";
    }
}

TEST_F(ControlsTest, EqualizerSnapsToHalfDecibels)
{
    show(new EQView(state, rig.theme));
    EXPECT_FALSE(named<VerticalSlider>("EQ gain at 1kHz")->isVisible());
    click("EQ");
    EXPECT_FALSE(rig.engine.eq().bypass());
    auto* slider = named<VerticalSlider>("EQ gain at 1kHz");
    ASSERT_TRUE(slider->isVisible());
    QTest::mousePress(slider, Qt::LeftButton, {}, { 12, 70 });
    QTest::mouseMove(slider, { 12, 40 });
    QTest::mouseRelease(slider, Qt::LeftButton, {}, { 12, 40 });
    const double gain = state.eqGains()[2];
    EXPECT_GT(gain, 3);
    EXPECT_EQ(gain * 2, std::round(gain * 2));
    EXPECT_EQ(rig.engine.eq().gain(2), static_cast<float>(gain));

    // A knob is grabbed where it is, off its centre too; beside it each click counts, and only one on it resets.
    constexpr QPoint onTrack(12, 100);
    const QPoint onKnob(12, 40 + 5);
    QTest::mousePress(slider, Qt::LeftButton, {}, onKnob);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, onKnob);
    QTest::mouseDClick(slider, Qt::RightButton, {}, onKnob);
    EXPECT_EQ(state.eqGains()[2], gain);
    QTest::mouseDClick(slider, Qt::LeftButton, {}, onTrack);
    EXPECT_LT(state.eqGains()[2], -3);
    QTest::mouseDClick(slider, Qt::LeftButton, {}, onTrack);
    EXPECT_EQ(state.eqGains()[2], 0);

    // What was stored is shown snapped and stays as it is.
    state.setEqGains({ 1.1, 0, -0.25, 0, 0 });
    EXPECT_EQ(named<VerticalSlider>("EQ gain at 60Hz")->gain(), 1);
    EXPECT_EQ(state.eqGains()[0], 1.1);
    for (const auto& [stored, label] : { std::pair{ 2.26, "2.5" }, std::pair{ -0.25, "-0.5" }, std::pair{ -0.2, "0" } })
        EXPECT_EQ(gainLabel(stored), QLatin1String(label));
    click("EQ");
    EXPECT_TRUE(rig.engine.eq().bypass());
    EXPECT_FALSE(slider->isVisible());
    click("Reset EQ");
    EXPECT_EQ(state.eqGains(), std::vector<double>(5, 0.0));
    EXPECT_FALSE(named<QPushButton>("Reset EQ")->isEnabled());
}

TEST_F(ControlsTest, TransportShowsWhatAClickWillDo)
{
    show(new TransportView(state, rig.theme));
    click("Play");
    EXPECT_TRUE(state.isPlaying());
    EXPECT_NE(named<QAbstractButton>("Pause"), nullptr);
    click("Hold");
    EXPECT_TRUE(state.holdEnabled());
    for (const auto& [seconds, text] : { std::pair{ 0.0, "00:00.000" }, std::pair{ 61.2349, "01:01.234" },
                                         std::pair{ 3725.5, "62:05.500" }, std::pair{ 59999.999, "999:59.999" } })
        EXPECT_EQ(formattedPosition(seconds), QLatin1String(text));
}

// ---- Colours ----

TEST(ThemeSourceTest, NoPreferenceIsLightUnlessTheDesktopIsDarkWithoutOne)
{
    const QPalette before = QGuiApplication::palette();
    QGuiApplication::setPalette(QPalette(Qt::black));
    const auto appearanceAfter = [](std::initializer_list<uint> preferences) {
        ThemeSource source;
        for (const uint preference : preferences)
            QMetaObject::invokeMethod(&source, "settingChanged", Q_ARG(QString, QStringLiteral("org.freedesktop.appearance")),
                                      Q_ARG(QString, QStringLiteral("color-scheme")),
                                      Q_ARG(QDBusVariant, QDBusVariant(preference)));
        return source.theme().appearance;
    };
    EXPECT_EQ(appearanceAfter({}), Appearance::dark);
    EXPECT_EQ(appearanceAfter({ 0 }), Appearance::dark);
    EXPECT_EQ(appearanceAfter({ 1 }), Appearance::dark);
    EXPECT_EQ(appearanceAfter({ 1, 0 }), Appearance::light);
    EXPECT_EQ(appearanceAfter({ 2, 1, 2 }), Appearance::light);
    QGuiApplication::setPalette(before);
}

double luminance(const QColor& color)
{
    const auto part = [](double value) { return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4); };
    return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
}

/// WCAG 2.1, relative luminance and contrast ratio.
double contrast(const QColor& one, const QColor& other)
{
    const double lighter = std::max(luminance(one), luminance(other));
    return (lighter + 0.05) / (std::min(luminance(one), luminance(other)) + 0.05);
}

QColor tinted(const QColor& ground, double opacity)
{
    const auto part = [&](double from, double to) { return static_cast<float>(from + (to - from) * opacity); };
    const QColor& over = AppTheme::accentPurple;
    return QColor::fromRgbF(part(ground.redF(), over.redF()), part(ground.greenF(), over.greenF()),
                            part(ground.blueF(), over.blueF()));
}

TEST(AppThemeTest, EveryTextCanBeRead)
{
    for (const Appearance appearance : { Appearance::light, Appearance::dark }) {
        const AppTheme theme(appearance);
        SCOPED_TRACE(appearance == Appearance::dark ? "dark" : "light");
        EXPECT_EQ(theme.window.lightness() < 128, appearance == Appearance::dark);
        for (const QColor& ground : { theme.window, theme.card, theme.field }) {
            for (const QColor& text : { theme.text, theme.secondaryText, theme.accentText, theme.redText })
                EXPECT_GE(contrast(text, ground), 4.5) << text.name().toStdString() << " on " << ground.name().toStdString();
        }
        for (const QColor& ground : { theme.fieldHover, theme.fieldPressed })
            EXPECT_GE(contrast(theme.text, ground), 4.5);
        EXPECT_GE(contrast(theme.accentTextOnTint, tinted(theme.card, AppTheme::tintOpacity + 0.05)), 4.5);
    }
    EXPECT_GE(contrast(AppTheme::onAccent, AppTheme::accentPurple), 4.5);
    EXPECT_GE(contrast(AppTheme::onToolbar, AppTheme::navy), 4.5);
}

}  // namespace
}  // namespace quillet
