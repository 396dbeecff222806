#include "app/ui/ContentView.h"
#include "app/ui/MainWindow.h"
#include "app/ui/Notice.h"
#include "app/ui/PlayerScreen.h"
#include "app/ui/Translations.h"
#include "app/ui/UpdateFlow.h"
#include "app/ui/controls/ElidedLabel.h"
#include "app/ui/settings/SettingsWindow.h"
#include "tests/app/ui/WindowRig.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QTest>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace quillet {
namespace {

constexpr std::int64_t megabyte = 1'048'576;

struct SettingsTest : testing::Test, WindowRig {
    AppState& state = *WindowRig::state;
    ContentView view{ services };
    FilePath stems = tools / "stems";
    FilePath venv = tools / "venv";
    SettingsWindow* window = nullptr;

    SettingsTest()
    {
        defaults.setString("QLT.stemsDirectory", stems.native());
        defaults.setString("QLT.dependenciesDirectory", venv.native());
        view.show();
    }

    static void write(const FilePath& file, const std::string& bytes = "x")
    {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << bytes;
    }
    void open()
    {
        if (window != nullptr)
            window->hide();
        commands.execute(CommandId::showSettings);
        window = view.findChild<SettingsWindow*>();
        finishWork();
    }
    [[nodiscard]] QComboBox& choice(const char* name) const
    {
        for (QComboBox* box : window->findChildren<QComboBox*>())
            if (box->accessibleName() == QLatin1String(name))
                return *box;
        throw std::runtime_error(name);
    }
    [[nodiscard]] QLineEdit& field(const char* name) const
    {
        for (QLineEdit* line : window->findChildren<QLineEdit*>())
            if (line->accessibleName() == QLatin1String(name))
                return *line;
        throw std::runtime_error(name);
    }
    void choose(const char* name, const char* label) const
    {
        QComboBox& box = choice(name);
        box.setCurrentIndex(box.findText(QLatin1String(label)));
        Q_EMIT box.activated(box.currentIndex());
    }
    static void type(QLineEdit& field, const char* text)
    {
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, QLatin1String(text));
        QTest::keyClick(&field, Qt::Key_Return);
    }
    [[nodiscard]] QMessageBox* alert() const
    {
        for (QMessageBox* box : view.findChildren<QMessageBox*>())
            if (box->isVisible())
                return box;
        return nullptr;
    }
    void answer(const char* text)
    {
        buttonIn(*alert(), text).click();
        finishWork();
    }
    void click(const char* text)
    {
        buttonIn(*window, text).click();
        finishWork();
    }
};

TEST_F(SettingsTest, TheCachesLimitsAreShownAndSetAndWhatIsNoLimitChangesNothing)
{
    cache.setMaxTotalBytes(50 * megabyte);
    cache.setMaxAgeSeconds(7 * 86'400);
    open();
    EXPECT_EQ(choice("Size limit").currentText(), QLatin1String("50 MB"));
    EXPECT_EQ(choice("Age limit").currentText(), QLatin1String("7 days"));
    EXPECT_TRUE(field("Max Cache Size").isHidden());
    cache.setMaxTotalBytes(50 * megabyte + 1);
    open();
    EXPECT_EQ(choice("Size limit").currentText(), QLatin1String("Custom"));
    EXPECT_EQ(field("Max Cache Size").text(), QLatin1String("50"));

    choose("Size limit", "Unlimited");
    EXPECT_EQ(cache.maxTotalBytes(), std::nullopt);
    choose("Size limit", "1 MB");
    EXPECT_EQ(cache.maxTotalBytes(), megabyte);
    choose("Size limit", "Custom");
    for (const char* text : { "0", "abc", "-1", "1e99", "1.5", "", "99999999999999999999", "9999999999999" }) {
        type(field("Max Cache Size"), text);
        EXPECT_EQ(cache.maxTotalBytes(), megabyte) << text;
        EXPECT_TRUE(isShown(*window, "Type a whole number of megabytes, at least 1.")) << text;
    }
    type(field("Max Cache Size"), " 7 ");
    EXPECT_EQ(cache.maxTotalBytes(), 7 * megabyte);
    EXPECT_FALSE(isShown(*window, "Type a whole number of megabytes, at least 1."));

    choose("Age limit", "Custom");
    type(field("Max Cache Age"), "30");
    open();
    EXPECT_EQ(choice("Age limit").currentText(), QLatin1String("1 month"));
    choose("Age limit", "Indefinite");
    EXPECT_EQ(cache.maxAgeSeconds(), std::nullopt);

    write(tools / "a.wav");
    cache.set(std::vector<float>(10, 0.5F), tools / "a.wav");
    settings.save({}, song);
    open();
    EXPECT_TRUE(isShown(*window, "1"));
    click("Clear Cache…");
    EXPECT_EQ(alert()->text(), QLatin1String("Clear all cached waveforms and saved song settings?"));
    answer("Cancel");
    EXPECT_EQ(cache.entryCount(), 1);
    click("Clear Cache…");
    answer("Clear Cache & Settings");
    EXPECT_EQ(cache.entryCount(), 0);
    EXPECT_FALSE(settings.load(song));
    EXPECT_TRUE(isShown(*window, "0"));
}

TEST_F(SettingsTest, WhatIsDeletedIsQuilletsOwn)
{
    open();
    EXPECT_FALSE(buttonIn(*window, "Delete Stems").isEnabled() || buttonIn(*window, "Remove Dependencies").isEnabled());
    EXPECT_TRUE(isShown(*window, "None") && isShown(*window, "Not installed"));

    const FilePath own = stems / StemFolder::pathHash(song) / "htdemucs_6s/song/vocals.wav";
    write(own, std::string(3 * megabyte, 's'));
    write(stems / "holiday.jpg", std::string(megabyte, 'p'));
    write(venv / "pyvenv.cfg");
    write(venv / "big", std::string(2 * megabyte, 'b'));
    const StemSession session{ { { "vocals", own } } };
    opener.add(own, sampleRate, sampleRate);
    stemSessions.save(session, song);
    state.enterStemMode(session, openStemFiles(opener, session.stems));
    open();
    EXPECT_TRUE(isShown(*window, "3.0 MB") && isShown(*window, "2.0 MB"));
    click("Delete Stems");
    EXPECT_EQ(alert()->text(), QLatin1String("Delete 3.0 MB of separated stem files?"));
    answer("Delete Stems");
    EXPECT_FALSE(std::filesystem::exists(own) || stemSessions.load(song) || state.stemSession() || engine.isInStemMode());
    EXPECT_TRUE(std::filesystem::exists(stems / "holiday.jpg"));
    EXPECT_TRUE(isShown(*window, "None"));
    click("Remove Dependencies");
    answer("Remove Dependencies");
    EXPECT_FALSE(std::filesystem::exists(venv));

    // Nothing is deleted under a separation that runs.
    write(own);
    open();
    EXPECT_TRUE(buttonIn(*window, "Delete Stems").isEnabled());
    std::filesystem::create_directories(tools / "backend");
    for (const char* file : { "backend/separate.py", "backend/requirements.txt" })
        write(tools / file);
    separator.separate(song);
    finishWork();
    EXPECT_FALSE(buttonIn(*window, "Delete Stems").isEnabled());
}

TEST_F(SettingsTest, AFolderThatHoldsOtherThingsIsAskedAboutFirst)
{
    open();
    const auto chooseFolder = [this](const char* button, const FilePath& folder) {
        for (auto* candidate : window->findChildren<QAbstractButton*>())
            if (candidate->accessibleName() == QLatin1String(button))
                candidate->click();
        for (auto* panel : window->findChildren<QFileDialog*>()) {
            if (!panel->isVisible())
                continue;
            Q_EMIT panel->filesSelected({ QString::fromStdString(folder.native()) });
            panel->close();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        finishWork();
    };
    write(tools / "music/song.wav");
    chooseFolder("Select: Stems folder", tools / "music");
    answer("Cancel");
    EXPECT_EQ(stemSettings.stemsDirectory(), stems);
    chooseFolder("Select: Stems folder", tools / "music");
    answer("Use Folder");
    EXPECT_EQ(stemSettings.stemsDirectory(), tools / "music");
    chooseFolder("Select: Dependencies folder", tools / "music");
    answer("Use Folder");
    EXPECT_EQ(stemSettings.dependenciesDirectory(), tools / "music/quillet-environment");
    std::filesystem::create_directories(tools / "empty");
    chooseFolder("Select: Dependencies folder", tools / "empty");
    EXPECT_EQ(stemSettings.dependenciesDirectory(), tools / "empty");
    chooseFolder("Select: Stems folder", tools / "gone");
    EXPECT_NE(alert()->text().indexOf(QLatin1String("Nothing can be written to")), -1);
    answer("OK");
    chooseFolder("Select: Download folder", tools / "music");
    EXPECT_EQ(downloadSettings.downloadDirectory(), tools / "music");
    for (auto* candidate : window->findChildren<QAbstractButton*>())
        if (candidate->text() == QLatin1String("Reset to Default"))
            candidate->click();
    for (const char* key : { "QLT.downloadDirectory", "QLT.stemsDirectory", "QLT.dependenciesDirectory" })
        EXPECT_FALSE(defaults.string(key)) << key;
}

/// What is shown in a narrower place than it needs.
std::string clippedIn(const QWidget& window)
{
    std::string clipped;
    const auto check = [&](const QWidget& widget, const QString& text, int padding) {
        if (widget.isVisible() && widget.width() < widget.fontMetrics().horizontalAdvance(text) + padding)
            clipped += text.toStdString() + "\n";
    };
    for (const auto* button : window.findChildren<QAbstractButton*>())
        check(*button, button->text(), button->text().isEmpty() ? 0 : 16);
    for (const auto* label : window.findChildren<QLabel*>())
        if (!label->wordWrap() && qobject_cast<const ElidedLabel*>(label) == nullptr)
            check(*label, label->text(), 0);
    return clipped;
}

TEST_F(SettingsTest, NoTextIsCutInAnyLanguage)
{
    for (const Language& language : Translations::languages) {
        Translations translations;
        translations.install(language.code);
        ContentView narrow(services);
        narrow.resize(680, 900);
        narrow.show();
        const StemSession session{ { { "drums", "/drums.wav" }, { "other", "/other.wav" } } };
        for (const StemSession::Stem& stem : session.stems)
            opener.add(stem.fileURL, sampleRate, 10 * sampleRate);
        state.setLoadingState(LoadingState::idle());
        QApplication::processEvents();
        EXPECT_EQ(clippedIn(narrow), "") << language.code;
        state.setLoadingState(LoadingState::loaded());
        state.enterStemMode(session, openStemFiles(opener, session.stems));
        state.setEqEnabled(true);
        commands.execute(CommandId::showSettings);
        finishWork();
        QApplication::processEvents();
        EXPECT_EQ(clippedIn(narrow), "") << language.code;
        EXPECT_EQ(narrow.findChild<SettingsWindow*>()->windowTitle(),
                  QLatin1String(std::string_view(language.code) == "de" ? "Einstellungen" : "Settings"));
        state.exitStemMode();
    }
}

TEST_F(SettingsTest, TheLanguageChangesAtOnceUnlessSomethingIsUnderWay)
{
    Translations translations;
    MainWindow main(services, translations);
    main.show();
    main.populate();
    main.setHeard(false);
    const auto firstMenu = [&main] { return main.menuBar()->actions().front()->text().toStdString(); };
    const auto chooseLanguage = [&](const char* language) {
        for (QComboBox* box : main.findChildren<QComboBox*>())
            if (const int index = box->findText(QLatin1String(language)); index >= 0) {
                box->setCurrentIndex(index);
                Q_EMIT box->activated(index);
            }
        QApplication::processEvents();
    };
    QApplication::processEvents();
    state.setZoomLevel(4);
    state.setPanOffset(500);
    commands.execute(CommandId::showSettings);
    chooseLanguage("Deutsch");
    EXPECT_EQ(state.panOffset(), 500) << "the same place is in view";
    EXPECT_EQ(firstMenu(), "Datei");
    EXPECT_EQ(main.findChild<SettingsWindow*>()->windowTitle(), QLatin1String("Einstellungen"));
    EXPECT_TRUE(main.findChild<SettingsWindow*>()->isVisible());
    EXPECT_TRUE(main.findChild<PlayerScreen*>()->isVisible());
    EXPECT_TRUE(isShown(main, "Es gibt kein Audiogerät: Bis es eines gibt, läuft die Wiedergabe ohne Ton."));

    commands.execute(CommandId::openFromURL);
    chooseLanguage("English");
    EXPECT_EQ(firstMenu(), "Datei") << "what the sheet shows would be lost";
    EXPECT_TRUE(isShown(main, "Noch ist etwas im Gange: Gilt ab dem nächsten Start von Quillet."));
}

TEST_F(SettingsTest, UpdatesAreToldOfAndNothingInThemActs)
{
    const Release release{ "9.1", "<b>Loops</b><script>x()</script>", "https://example.org/" };
    commands.execute(CommandId::checkForUpdates);
    EXPECT_EQ(alert()->text(), QString::fromUtf8("Checking for updates…"));
    updater.answered(std::optional(release));
    EXPECT_EQ(alert()->informativeText(), QLatin1String("Loops"));
    answer("Close");
    commands.execute(CommandId::checkForUpdates);
    updater.answered(std::unexpected("No network."));
    EXPECT_EQ(alert()->text(), QLatin1String("No network."));
    QTest::keyClick(alert(), Qt::Key_Escape);
    EXPECT_EQ(alert(), nullptr);

    // Within a day nobody is asked again.
    updater.answered = nullptr;
    view.checkForUpdatesInBackground();
    EXPECT_FALSE(updater.answered);
    defaults.setReal(UpdateFlow::lastCheckKey, 0);
    view.checkForUpdatesInBackground();
    ASSERT_TRUE(updater.answered);
    const auto notices = [this] { return view.findChildren<Notice*>().size(); };
    const auto before = notices();
    updater.answered(std::unexpected("No network."));
    EXPECT_EQ(notices(), before);
    updater.answered(std::optional(release));
    EXPECT_EQ(notices(), before + 1);
}

}  // namespace
}  // namespace quillet
