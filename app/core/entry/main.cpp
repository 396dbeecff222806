// The program's entry.

#include "app/cli/CommandLine.h"
#include "app/cli/InfoCommand.h"
#include "app/cli/PlayCommand.h"
#include "app/cli/RenderCommand.h"
#include "app/cli/SeparateCommand.h"
#include "app/cli/WaveformCommand.h"
#include "app/core/entry/QuilletApp.h"
#include "platform/files/NormalPath.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

int fail(const std::string& sentence, int status)
{
    std::fprintf(stderr, "quillet: %s\n", sentence.c_str());
    return status;
}

int report(const std::expected<int, std::string>& outcome) { return outcome ? *outcome : fail(outcome.error(), failed); }

/// What needs no window.
int run(const quillet::Invocation& invocation)
{
    if (const auto* print = std::get_if<quillet::PrintText>(&invocation)) {
        std::fputs(print->text.c_str(), stdout);
        return std::fflush(stdout) == 0 ? 0 : failed;
    }
    if (const auto* render = std::get_if<quillet::RenderFile>(&invocation))
        return report(quillet::renderFile(render->options));
    if (const auto* waveform = std::get_if<quillet::ShowWaveform>(&invocation))
        return report(quillet::showWaveform(waveform->options));
    if (const auto* separate = std::get_if<quillet::SeparateSongs>(&invocation))
        return report(quillet::separateSongs(separate->options));
    if (const auto* info = std::get_if<quillet::ShowInfo>(&invocation))
        return report(quillet::showInfo(info->options));
    return report(quillet::playFile(std::get<quillet::PlayFile>(invocation).options));
}

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Where one is open already, that one comes to the front and opens the files.
int showWindow(int& argumentCount, char** arguments, const std::vector<quillet::FilePath>& files)
{
    using quillet::SingleInstance;
    SingleInstance instance;
    quillet::HandOver handOver{ {}, environment("XDG_ACTIVATION_TOKEN"), environment("DESKTOP_STARTUP_ID") };
    for (const quillet::FilePath& file : files)
        handOver.files.push_back(quillet::normalPath(file));
    if (instance.start(handOver) == SingleInstance::Start::handedOver)
        return 0;
    return quillet::runWindow(argumentCount, arguments, handOver.files, instance);
}

}  // namespace

int main(int argc, char* argv[])
{
    // Before Qt, which takes arguments of its own out.
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const auto invocation = quillet::parseCommandLine(arguments);
    if (!invocation)
        return fail(invocation.error().message + " See “quillet --help”.", wrongUsage);
    if (const auto* window = std::get_if<quillet::OpenWindow>(&*invocation))
        return showWindow(argc, argv, window->files);
    const QCoreApplication application(argc, argv);
    return run(*invocation);
}
