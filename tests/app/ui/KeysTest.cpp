// Keys as the toolkit delivers them, to a window with a menu, a field and a button.

#include "app/core/keyboard/KeyHandler.h"
#include "app/core/keyboard/KeyResponderView.h"
#include "app/ui/settings/KeySettings.h"
#include "tests/app/ui/WindowRig.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>

#include <algorithm>
#include <string>
#include <vector>

namespace quillet {
namespace {

struct KeysTest : testing::Test {
    WindowRig rig;
    AppState& state = *rig.state;
    KeyMap& keyMap = rig.keyMap;
    KeyHandler keys{ rig.scheduler, keyMap };
    QMainWindow window;
    QLineEdit* field = new QLineEdit(&window);
    KeyResponderView* responder = new KeyResponderView(state, rig.commands, &window);
    int menuActions = 0;

    KeysTest()
    {
        for (const Command& command : commands) {
            auto* action = new QAction(&window);
            if (command.shortcut != 0)
                action->setShortcut(QKeySequence(command.shortcut));
            QObject::connect(action, &QAction::triggered, &window, [this] { ++menuActions; });
            window.addAction(action);
        }
        window.setCentralWidget(field);
        window.show();
        window.activateWindow();
        static_cast<void>(QTest::qWaitForWindowActive(&window));
        responder->setFocus();
        keys.start(rig.state, rig.commands);
    }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
        rig.scheduler.advance(0);
    }
};

TEST_F(KeysTest, CommandShortcutsActOnceWhereverTheFocusIs)
{
    for (QWidget* focused : { static_cast<QWidget*>(responder), static_cast<QWidget*>(field) }) {
        state.setSpeed(50);
        field->setText(QStringLiteral("some words"));
        focused->setFocus();
        for (const auto modifiers : { Qt::KeyboardModifiers(Qt::ControlModifier), Qt::ControlModifier | Qt::ShiftModifier })
            press(Qt::Key_Left, modifiers);
        EXPECT_EQ(state.speed(), 40);
        EXPECT_EQ(rig.engine.timePitch().rate(), 0.4);
    }
    EXPECT_EQ(menuActions, 0) << "and the menu's shortcuts not besides";
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_EQ(menuActions, 1);
}

TEST_F(KeysTest, EveryKeyGivesItsCommandByPlaceAndByName)
{
    struct Case {
        quint32 scanCode;
        Qt::Key key;
        Qt::KeyboardModifier modifier;
        const char* notification;
    };
    std::vector<std::string> heard;
    std::vector<Notifications::Subscription> subscriptions;
    for (const Command& command : commands)
        subscriptions.push_back(
            rig.notifications.subscribe(command.name, [&heard, &command](const auto&) { heard.emplace_back(command.name); }));
    state.setHoldEnabled(true);
    for (const Case& test : {
             Case{ 43, Qt::Key_H, Qt::NoModifier, "QLT.toggleHold" },
             Case{ 43, Qt::Key_H, Qt::NoModifier, "QLT.toggleHold" },
             Case{ 114, Qt::Key_Right, Qt::NoModifier, "QLT.holdForward" },
             Case{ 113, Qt::Key_Left, Qt::NoModifier, "QLT.holdBackward" },
             Case{ 27, Qt::Key_R, Qt::ControlModifier, "QLT.stopReset" },
             Case{ 46, Qt::Key_L, Qt::ControlModifier, "QLT.toggleLoop" },
             Case{ 113, Qt::Key_Left, Qt::ControlModifier, "QLT.decreaseSpeed" },
             Case{ 114, Qt::Key_Right, Qt::ControlModifier, "QLT.increaseSpeed" },
             Case{ 111, Qt::Key_Up, Qt::ControlModifier, "QLT.pitchUp" },
             Case{ 116, Qt::Key_Down, Qt::ControlModifier, "QLT.pitchDown" },
             Case{ 65, Qt::Key_Space, Qt::NoModifier, "QLT.playPause" },
         }) {
        constexpr quint32 noPlace = 0;
        constexpr quint32 anotherPlace = 9;
        for (const quint32 scanCode : { test.scanCode, noPlace, anotherPlace }) {
            if (scanCode == anotherPlace && test.key >= Qt::Key_A && test.key <= Qt::Key_Z)
                continue;
            heard.clear();
            // By its place the letter does not matter.
            QKeyEvent event(QEvent::KeyPress, scanCode == test.scanCode ? Qt::Key_Y : test.key, test.modifier, scanCode, 0, 0);
            QApplication::sendEvent(responder, &event);
            rig.scheduler.advance(0);
            EXPECT_EQ(heard, std::vector<std::string>{ test.notification });
        }
    }
    // H, where a Dvorak keyboard has it.
    heard.clear();
    QKeyEvent elsewhere(QEvent::KeyPress, Qt::Key_H, Qt::NoModifier, 44, 0, 0);
    QApplication::sendEvent(responder, &elsewhere);
    rig.scheduler.advance(0);
    EXPECT_TRUE(heard.empty());
    // What a menu shows is what the key does.
    for (const Command& command : commands)
        EXPECT_TRUE(command.use != KeyUse::withCommandKey || command.shortcut == 0
                    || command.shortcut == withCommandKey(command.key.key))
            << command.name;
}

TEST_F(KeysTest, HoldKeysActOutsideTextsAndArrowsWhileSomethingIsHeld)
{
    field->setText({});
    field->setFocus();
    press(Qt::Key_H);
    EXPECT_EQ(field->text(), QStringLiteral("h"));
    EXPECT_FALSE(state.holdEnabled());

    // A field that is not edited: the keys are not taken for its sake.
    field->setReadOnly(true);
    press(Qt::Key_Left);
    EXPECT_EQ(field->cursorPosition(), 0);
    press(Qt::Key_H, Qt::ShiftModifier);
    EXPECT_TRUE(state.holdEnabled());
    press(Qt::Key_Right);
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(state.holdPosition(), 0.08);
    press(Qt::Key_Left);
    EXPECT_EQ(state.holdPosition(), 0);
    EXPECT_EQ(field->selectedText(), QStringLiteral("h")) << "by Shift and the arrow alone";
}

TEST_F(KeysTest, WhatIsTakenActsOnceTheHandlerHasReturnedAndAgainForEachRepeat)
{
    for (const bool isRepeat : { false, true }) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Up, Qt::ControlModifier, QString(), isRepeat);
        QApplication::sendEvent(responder, &press);
        EXPECT_EQ(state.pitch(), isRepeat ? 1 : 0);
        rig.scheduler.advance(0);
        EXPECT_EQ(state.pitch(), isRepeat ? 2 : 1);
        EXPECT_EQ(rig.engine.timePitch().pitch(), state.pitch());
    }
}

TEST_F(KeysTest, ADialogKeepsItsKeysButTheCommandsWhereNothingCanBeTyped)
{
    // The second lets the window be used, and has nothing to type in.
    for (const Qt::WindowModality modality : { Qt::WindowModal, Qt::NonModal }) {
        QDialog dialog(&window);
        auto* entry = new QLineEdit(&dialog);
        entry->setReadOnly(modality == Qt::NonModal);
        dialog.setWindowModality(modality);
        dialog.show();
        activate(dialog);
        for (const auto& [key, modifiers] :
             { std::pair(Qt::Key_Up, Qt::ControlModifier), std::pair(Qt::Key_H, Qt::NoModifier) }) {
            QTest::keyClick(entry, key, modifiers);
            rig.scheduler.advance(0);
        }
        EXPECT_EQ(entry->text(), entry->isReadOnly() ? QString() : QStringLiteral("h"));
        EXPECT_EQ(state.pitch(), entry->isReadOnly() ? 1 : 0);
        EXPECT_FALSE(state.holdEnabled());
    }
    window.activateWindow();
    responder->setFocus();
    keys.stop();
    press(Qt::Key_Up, Qt::ControlModifier);
    press(Qt::Key_H);
    EXPECT_EQ(state.pitch(), 1);
    EXPECT_FALSE(state.holdEnabled());
}

TEST_F(KeysTest, SpacePlaysAndPausesUnlessATextIsEdited)
{
    press(Qt::Key_Space);
    EXPECT_TRUE(state.isPlaying());
    QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, QStringLiteral(" "), true);
    QApplication::sendEvent(responder, &repeat);
    EXPECT_TRUE(state.isPlaying());
    press(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_TRUE(state.isPlaying());
    press(Qt::Key_Space);
    EXPECT_FALSE(state.isPlaying());
    field->setFocus();
    press(Qt::Key_Space);
    EXPECT_EQ(field->text(), QStringLiteral(" "));
    EXPECT_FALSE(state.isPlaying());
    field->clearFocus();
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::focusWidget(), responder);
}

TEST_F(KeysTest, WithoutAFileNothingActs)
{
    state.setLoadingState(LoadingState::loading(""));
    press(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(menuActions, 1) << "the menu gets it, whose receiver knows the same rule";
    EXPECT_EQ(state.speed(), 100);
    press(Qt::Key_H);
    press(Qt::Key_Space);
    EXPECT_FALSE(state.holdEnabled() || state.isPlaying());
}

TEST(NotificationsTest, ReachThoseWhoHaveSubscribedByThen)
{
    Notifications notifications;
    std::vector<std::string> heard;
    Notifications::Subscription second;
    Notifications::Subscription late;
    auto first = notifications.subscribe("a", [&](const std::optional<FilePath>& object) {
        heard.push_back("first " + object.value_or("-").native());
        second = {};
        late = notifications.subscribe("a", [&](const auto&) { heard.emplace_back("late"); });
    });
    second = notifications.subscribe("a", [&](const auto&) { heard.emplace_back("second"); });
    notifications.post("b");
    notifications.post("a", FilePath("/x"));
    EXPECT_EQ(heard, std::vector<std::string>{ "first /x" });
    first = {};
    notifications.post("a");
    EXPECT_EQ(heard.back(), "late");
}

TEST_F(KeysTest, AKeyOfTheUsersOwnReplacesTheUsualOneAndIsKept)
{
    rig.state->setLoopEnabled(true);
    keyMap.choose(CommandId::toggleLoop, { { 0, Qt::Key_PageDown }, 0 });
    keyMap.choose(CommandId::stopReset, { { 0, Qt::Key_B }, 0 });
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(state.loopEnabled()) << "the usual key has gone";
    press(Qt::Key_PageDown);
    EXPECT_FALSE(state.loopEnabled());
    press(Qt::Key_PageDown, Qt::ShiftModifier);
    EXPECT_FALSE(state.loopEnabled()) << "exactly that key";
    field->setText({});
    field->setFocus();
    press(Qt::Key_B);
    EXPECT_EQ(field->text(), QStringLiteral("b")) << "a letter is typed where texts are";
    EXPECT_EQ(keyMap.otherWith({ { 0, Qt::Key_B }, 0 }, CommandId::toggleLoop), CommandId::stopReset);

    // Without a song only what one has chosen acts, to open one.
    state.setLoadingState(LoadingState::idle());
    responder->setFocus();
    keyMap.choose(CommandId::openFile, { { 0, Qt::Key_F5 }, 0 });
    int opened = 0;
    const auto subscription = rig.notifications.subscribe("QLT.openFile", [&opened](const auto&) { ++opened; });
    press(Qt::Key_F5);
    EXPECT_EQ(opened, 1);
    state.setLoadingState(LoadingState::loaded());

    const KeyMap again(rig.defaults);
    ASSERT_TRUE(again.chosen(CommandId::toggleLoop));
    EXPECT_TRUE(again.chosen(CommandId::toggleLoop)->isSameAs({ { 0, Qt::Key_PageDown }, 0 }));
    keyMap.resetAll();
    responder->setFocus();
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(state.loopEnabled());
    rig.defaults.setData("QLT.keys", R"({"QLT.toggleLoop":{"key":-1},"QLT.nothing":{"key":65},"QLT.undo":7})");
    EXPECT_FALSE(KeyMap(rig.defaults).chosen(CommandId::toggleLoop));

    // In the settings: a click, the key.
    menuActions = 0;
    KeySettings settings(rig.theme, keyMap);
    settings.show();
    const auto buttons = settings.findChildren<QPushButton*>();
    const auto loop = std::ranges::find_if(
        buttons, [](const QPushButton* button) { return button->accessibleName().startsWith(QStringLiteral("Toggle Loop")); });
    ASSERT_NE(loop, buttons.end());
    (*loop)->click();
    QTest::keyClick(*loop, Qt::Key_R, Qt::ControlModifier);
    rig.scheduler.advance(0);
    EXPECT_EQ((*loop)->text(), QStringLiteral("Ctrl+R"));
    const auto labels = settings.findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(
        labels, [](const QLabel* label) { return label->text() == QStringLiteral("also: Stop and Reset"); }));
    EXPECT_EQ(menuActions, 0);
}

}  // namespace
}  // namespace quillet
