#include "app/stems/StemSeparator.h"

#include "AppCore/StemSession.h"
#include "app/stems/SeparationOutput.h"
#include "platform/defaults/MemoryDefaultsDomain.h"
#include "platform/files/SystemFileAttributes.h"
#include "platform/schedule/VirtualScheduler.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/ManualRunner.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>

namespace quillet {
namespace {

using Kind = StemSeparationPhase::Kind;
using testing::ElementsAre;

void write(const FilePath& file, const std::string& text)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

std::string read(const FilePath& file)
{
    std::ifstream stream(file);
    return { std::istreambuf_iterator<char>(stream), {} };
}

struct StemSeparatorTest : testing::Test {
    TemporaryFolder folder;
    VirtualScheduler scheduler;
    ManualRunner background;
    FakeProcessRunner processes;
    MemoryDefaultsDomain defaults;
    SystemFileAttributes attributes;
    StemSettingsStore settings{ defaults };
    FilePath uv = folder / "bin/uv";
    FilePath script = folder / "share/backend/separate.py";
    FilePath requirements = folder / "share/backend/requirements.txt";
    FilePath environment = folder / "venv";
    FilePath song = folder / "some song.flac";
    FilePath output = folder / "stems" / StemFolder::pathHash(song);
    std::optional<StemSeparator> separator{ std::in_place,
                                            StemSeparator::Services{ processes, background, scheduler, settings, attributes,
                                                                     folder / "bin", folder / "share" } };

    StemSeparatorTest()
    {
        defaults.setString("QLT.stemsDirectory", (folder / "stems").native());
        defaults.setString("QLT.dependenciesDirectory", environment.native());
        for (const FilePath& file : { uv, script, song })
            write(file, "x");
        write(requirements, "torch==2");
    }

    void work()
    {
        while (background.waiting() > 0) {
            background.finish();
            scheduler.advance(0);
        }
    }
    void separate()
    {
        separator->separate(song);
        work();
    }
    void endChild(int status, const std::string& text = {}, const std::string& errors = {})
    {
        processes.last().end(status, text, errors);
        work();
    }
    void writeEnvironment() const
    {
        write(environment / "pyvenv.cfg", "");
        write(environment / "bin/python3", "");
    }
    std::string makeStems()
    {
        std::string json = R"({"success": true, "stems": {)";
        for (const auto key : StemSession::keys) {
            const FilePath file = output / "htdemucs_6s" / "some song" / (std::string(key) + ".wav");
            write(file, "sound");
            json += (json.ends_with('{') ? "\"" : ", \"") + std::string(key) + R"(": ")" + file.native() + '"';
        }
        return json + "}}\n";
    }
    [[nodiscard]] Kind phase() const { return separator->phase().kind; }
    [[nodiscard]] const std::string& message() const { return separator->phase().message; }
};

TEST_F(StemSeparatorTest, TheFirstSeparationBuildsTheEnvironmentAndTheSecondFindsTheStems)
{
    EXPECT_TRUE(separator->isFirstUse());
    separate();
    EXPECT_EQ(phase(), Kind::installingEnvironment);
    EXPECT_EQ(separator->progressMessage(), "Creating Python environment…");
    EXPECT_EQ(processes.last().request.executable, uv);
    EXPECT_THAT(processes.last().request.arguments, ElementsAre("venv", "--python", "3.12", "--clear", environment.native()));
    endChild(0, "much output");
    EXPECT_THAT(processes.last().request.arguments,
                ElementsAre("pip", "install", "-r", requirements.native(), "--python", environment.native()));
    writeEnvironment();
    EXPECT_FALSE(std::filesystem::exists(environment / ".req-hash"));
    endChild(0);
    // SHA-256 of "torch==2".
    EXPECT_EQ(read(environment / ".req-hash"), "ca94265656ab3e0b39cafca29034c622f7e7b8077b9b3ec25c91175e836999b9");

    EXPECT_EQ(phase(), Kind::separating);
    EXPECT_EQ(separator->separationProgress(), 0.0);
    EXPECT_EQ(processes.last().request.executable, environment / "bin/python3");
    EXPECT_THAT(
        processes.last().request.arguments,
        ElementsAre(script.native(), "--input-file", song.native(), "--model", "htdemucs_6s", "--output-dir", output.native()));
    EXPECT_EQ(processes.last().request.input, ProcessInput::none);
    processes.last().say("{\"message\": \"Separating\"}\n37%|###\n12%\n150%");
    EXPECT_EQ(separator->progressMessage(), "Separating");
    EXPECT_EQ(separator->separationProgress(), 0.37);
    processes.last().say("{\"message\": \"Done.\"}");
    EXPECT_EQ(separator->separationProgress(), 1.0);
    endChild(0, makeStems());
    EXPECT_EQ(phase(), Kind::complete);
    EXPECT_EQ(separator->phase().stems.at("guitar"), output / "htdemucs_6s/some song/guitar.wav");

    const auto children = processes.children.size();
    separator->reset();
    separate();
    EXPECT_EQ(phase(), Kind::complete);
    std::filesystem::remove(output / "htdemucs_6s/some song/piano.wav");
    EXPECT_FALSE(separator->hasCachedStems(song));
    EXPECT_EQ(processes.children.size(), children);
    separate();
    EXPECT_EQ(phase(), Kind::separating) << "the environment is there";
    // Changed since: made again, whatever is there.
    endChild(0, makeStems());
    write(song, "another take");
    EXPECT_TRUE(separator->hasOutdatedStems(song));
    separate();
    EXPECT_EQ(phase(), Kind::separating);
    endChild(1, " no guitar \n");
    write(environment / ".req-hash", read(environment / ".req-hash") + " \n");
    separate();
    EXPECT_EQ(phase(), Kind::separating) << "white space around the mark is nothing";
    endChild(1);
    write(requirements, "torch==3");
    separate();
    EXPECT_EQ(phase(), Kind::installingEnvironment);
    EXPECT_FALSE(std::filesystem::exists(environment / ".req-hash")) << "unfinished from now on, whatever ends the program";
}

TEST(SeparationOutputTest, ChunksAreReadAsTheyCome)
{
    const auto fraction = [](const char* text) -> std::optional<double> {
        const auto updates = progressIn(text);
        return updates.size() == 1 && std::holds_alternative<double>(updates[0]) ? std::optional(std::get<double>(updates[0]))
                                                                                 : std::nullopt;
    };
    EXPECT_EQ(fraction("\r 37%|####   | 12/32"), 0.37);
    EXPECT_EQ(fraction("12.5%"), 0.05);
    EXPECT_EQ(fraction(R"({"message": "50%", "n": 1})"), 0.5) << "not all are texts";
    for (const char* nothing : { "150%", "%", "a %", "37", "\xff 12%", "", "99999999999999999999%", "[\"message\"]" })
        EXPECT_TRUE(progressIn(nothing).empty()) << nothing;
    EXPECT_THAT(
        progressIn("{\"message\": \"a\"}\r\n1%\n{\"message\": \"Done.\", \"b\": \"\"}"),
        ElementsAre(ProgressUpdate(ProgressMessage{ "a" }), ProgressUpdate(0.01), ProgressUpdate(ProgressMessage{ "Done." })));
}

TEST_F(StemSeparatorTest, FailuresSayWhatHappenedAndTheEnvironmentIsNeverHalf)
{
    for (const auto& [errors, said] : { std::pair(" no network \n", "no network"), std::pair("", "Process exited with code 3."),
                                        std::pair("\xff", "Process exited with code 3.") }) {
        separate();
        write(environment / "pyvenv.cfg", "");
        endChild(3, "out", errors);
        EXPECT_EQ(phase(), Kind::failed);
        EXPECT_EQ(message(), said);
        EXPECT_FALSE(std::filesystem::exists(environment));
    }
    separate();
    writeEnvironment();
    endChild(0);
    endChild(0);
    struct Row {
        int status;
        std::string output;
        const char* errors;
        std::string said;
    };
    const std::string refused = R"({"success": false, "error": "x"})";
    for (const Row& row :
         { Row{ 1, "No space.\n", "", "No space." }, Row{ 0, "", "", "Separation failed (exit 0)" },
           Row{ 0, refused, " tail ", refused + "\ntail" }, Row{ 0, R"({"success": true})", "", R"({"success": true})" },
           Row{ 137, "", "\xfe", "Separation failed (exit 137)" }, Row{ 0, "[1", "", "[1" } }) {
        endChild(row.status, row.output, row.errors);
        EXPECT_EQ(message(), row.said);
        EXPECT_EQ(separator->separationProgress(), std::nullopt);
        separate();
    }
    endChild(1);
    write(folder / "stems-file", "");
    defaults.setString("QLT.stemsDirectory", (folder / "stems-file").native());
    separate();
    EXPECT_THAT(message(), testing::HasSubstr("Not a directory"));
    defaults.setString("QLT.stemsDirectory", (folder / "stems").native());

    std::filesystem::remove(script);
    separate();
    EXPECT_EQ(message(), "Required binary 'separate.py' not found in app bundle.");
    std::filesystem::remove(requirements);
    separate();
    endChild(0);
    EXPECT_EQ(message(), "Required binary 'uv' not found in app bundle.") << "for the requirements too";
    std::filesystem::remove(uv);
    separate();
    EXPECT_EQ(message(), "Required binary 'uv' not found in app bundle.");
}

TEST_F(StemSeparatorTest, AFolderOfTheUsersOwnIsNeitherClearedNorDeleted)
{
    write(environment / "thesis.txt", "years of work");
    separate();
    EXPECT_EQ(phase(), Kind::failed);
    EXPECT_THAT(message(), testing::HasSubstr(environment.native()));
    EXPECT_TRUE(processes.children.empty());
    EXPECT_EQ(read(environment / "thesis.txt"), "years of work");

    std::filesystem::rename(environment / "thesis.txt", folder / "thesis.txt");
    writeEnvironment();
    write(environment / "lib/python3.12/site-packages/numpy.dist-info/METADATA", "x");
    separate();
    EXPECT_EQ(phase(), Kind::failed) << "an environment of somebody else's";
    write(environment / ".req-hash", "an older one");
    separate();
    EXPECT_EQ(phase(), Kind::installingEnvironment);

    const FilePath others = output.parent_path() / "0123456789ab" / "mine.txt";
    for (const FilePath& mine : { output / "notes.txt", output / "htdemucs_6s/some song/take 1.wav", others })
        write(mine, "mine");
    write(output / "htdemucs_6s/some song/vocals.wav", "sound");
    const auto folders = StemFolder::all(output.parent_path());
    ASSERT_EQ(folders.size(), 1U);
    EXPECT_EQ(folders.front().path(), output);
    separator->folderOf(song).remove();
    EXPECT_FALSE(std::filesystem::exists(output / "htdemucs_6s/some song/vocals.wav"));
    for (const FilePath& mine : { output / "notes.txt", output / "htdemucs_6s/some song/take 1.wav", others })
        EXPECT_EQ(read(mine), "mine");
}

TEST_F(StemSeparatorTest, CancelledAtAnyMomentNothingHalfIsLeft)
{
    // After so many steps of the road: looking, three of the environment, its mark, the folder, the separation, its record.
    const auto startOver = [this] {
        std::filesystem::remove_all(environment);
        std::filesystem::remove_all(folder / "stems");
        separator->separate(song);
    };
    for (int steps = 0; steps <= 7; ++steps) {
        startOver();
        for (int i = 0; i < steps; ++i) {
            if (background.waiting() > 0) {
                background.finish();
                scheduler.advance(0);
                continue;
            }
            writeEnvironment();
            processes.last().end(0, phase() == Kind::separating ? makeStems() : "");
        }
        separator->cancel();
        EXPECT_EQ(phase(), Kind::cancelling);
        separator->reset();
        separator->separate(song);
        work();
        if (!processes.children.empty() && processes.last().handlers) {
            EXPECT_TRUE(processes.last().wasAskedToEnd) << steps;
            write(output / ".separating-x/vocals.wav", "");
            endChild(0, makeStems());
        }
        EXPECT_EQ(phase(), Kind::idle) << steps;
        EXPECT_TRUE(!std::filesystem::exists(environment) || std::filesystem::exists(environment / ".req-hash")) << steps;
        EXPECT_TRUE(!std::filesystem::exists(output) || std::filesystem::is_empty(output) || separator->hasCachedStems(song))
            << steps;
    }

    // One that does not end is ended.
    startOver();
    work();
    separator->cancel();
    scheduler.advance(StemSeparator::terminationSeconds - 0.01);
    EXPECT_FALSE(processes.last().wasEnded);
    scheduler.advance(0.01);
    work();
    EXPECT_TRUE(processes.last().wasEnded);
    EXPECT_EQ(phase(), Kind::idle);

    // Nobody waits any more.
    for (const bool isWorking : { true, false }) {
        startOver();
        if (!isWorking)
            work();
        const auto child = isWorking ? nullptr : processes.children.back();
        separator.reset();
        work();
        EXPECT_TRUE(!child || child->wasEnded);
        separator.emplace(StemSeparator::Services{ processes, background, scheduler, settings, attributes, folder / "bin",
                                                   folder / "share" });
    }
}

}  // namespace
}  // namespace quillet
