// What a song with 500 saved loops, as many as there can be, costs: the main thread's time for each change in the whole window,
// with what it paints and what it keeps; and how much later such a song opens.
//
//   quillet-bench-loops [ROUNDS]
//
// Prints the median and the slowest of ROUNDS (25), in milliseconds, beside a song with one loop. The window is painted by the
// processor, as with the program; no screen is needed.

#include "app/ui/QuilletStyle.h"
#include "platform/defaults/SqliteDefaultsDomain.h"
#include "tests/app/ui/WindowRig.h"

#include <QApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace quillet;

constexpr double songSeconds = 300;

double millisecondsOf(const std::function<void()>& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

struct Cost {
    std::vector<double> milliseconds;

    [[nodiscard]] std::string text()
    {
        std::ranges::sort(milliseconds);
        char text[64];
        std::snprintf(text, sizeof text, "%.2f / %.2f", milliseconds[milliseconds.size() / 2], milliseconds.back());
        return text;
    }
};

NamedLoop loopNumber(std::size_t number)
{
    const double start = static_cast<double>(number % 97) * 3;
    return { .name = "Loop " + std::to_string(number + 1),
             .region = { start, start + 2.5 },
             .speed = 50,
             .pitch = 0,
             .trainer = Trainer{},
             .color = static_cast<int>(number % NamedLoop::colorCount) };
}

std::vector<NamedLoop> manyLoops(std::size_t count)
{
    std::vector<NamedLoop> loops;
    for (std::size_t number = 0; number < count; ++number)
        loops.push_back(loopNumber(number));
    return loops;
}

/// A window with the song open, 1000 x 860.
struct Bench : WindowRig {
    ContentView view{ services };

    Bench()
        : WindowRig(songSeconds)
    {
        view.resize(1000, 860);
        view.show();
        settle();
    }

    /// What is laid out, painted and kept after a change.
    void settle()
    {
        QCoreApplication::processEvents();
        scheduler.advance(1);
        QCoreApplication::processEvents();
    }

    Cost measure(int rounds, const std::function<void(int round)>& change)
    {
        Cost cost;
        for (int round = 0; round < rounds; ++round)
            cost.milliseconds.push_back(millisecondsOf([&] {
                change(round);
                settle();
            }));
        return cost;
    }
};

struct Change {
    const char* title;
    std::function<void(AppState& state, int round)> run;
};

const std::vector<Change>& changes()
{
    static const std::vector<Change> all{
        { "deleted", [](AppState& state, int) { state.removeLoop(0); } },
        { "saved",
          [](AppState& state, int round) {
              state.setRegion({ 0.1 * round, 0.1 * round + 1 });
              state.saveLoop();
          } },
        { "coloured",
          [](AppState& state, int round) {
              NamedLoop loop = state.loops().front();
              loop.color = round % NamedLoop::colorCount;
              loop.name = "Bar " + std::to_string(round);
              state.setLoop(0, std::move(loop));
          } },
        { "moved", [](AppState& state, int) { state.moveLoop(0, state.loops().size() - 1); } },
        { "called up",
          [](AppState& state, int round) {
              state.callLoop(static_cast<std::size_t>(round) % state.loops().size(), AppState::CallUp::atOnce);
          } },
        { "undone", [](AppState& state, int) { state.undo(); } },
    };
    return all;
}

/// In a real database.
struct StoreCost {
    Cost kept, read;

    StoreCost(std::size_t count, int rounds)
    {
        const TemporaryFolder folder;
        const FilePath song = "/music/song.flac";
        SqliteDefaultsDomain defaults{ folder / "defaults.sqlite" };
        PracticeStore store{ defaults };
        Practice practice;
        practice.loops = manyLoops(count);
        for (int round = 0; round < rounds; ++round) {
            practice.loops.front().color = round % NamedLoop::colorCount;
            kept.milliseconds.push_back(millisecondsOf([&] { store.save(practice, song); }));
            read.milliseconds.push_back(millisecondsOf([&] { static_cast<void>(store.load(song)); }));
        }
    }
};

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 25;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const ThemeSource theme;
    QApplication::setStyle(new QuilletStyle(theme));

    Bench few, many;
    const auto fill = [](Bench& bench, std::size_t count) {
        bench.state->setLoops(manyLoops(count));
        bench.settle();
    };
    std::printf("| a loop is | among few | among %zu |\n|---|---|---|\n", Practice::maxLoops);
    for (const Change& change : changes()) {
        fill(few, static_cast<std::size_t>(rounds) + 1);
        fill(many, Practice::maxLoops - (change.title == std::string_view("saved") ? static_cast<std::size_t>(rounds) : 0));
        const auto cost = [&](Bench& bench) {
            return bench.measure(rounds, [&](int round) { change.run(*bench.state, round); }).text();
        };
        std::printf("| %s | %s | %s |\n", change.title, cost(few).c_str(), cost(many).c_str());
    }
    StoreCost one(1, rounds);
    StoreCost all(Practice::maxLoops, rounds);
    std::printf("| kept in the database | %s | %s |\n", one.kept.text().c_str(), all.kept.text().c_str());
    std::printf("| read, when the song is opened | %s | %s |\n", one.read.text().c_str(), all.read.text().c_str());
    return 0;
}
