#include "tests/support/TestSoundServer.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string_view>

#include <poll.h>
#include <pulse/context.h>
#include <pulse/mainloop.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillet {
namespace {

constexpr std::chrono::seconds startLimit(20);

/// Whether a client gets through to the server right now.
bool serverAnswers(const std::string& address)
{
    const std::unique_ptr<pa_mainloop, decltype(&pa_mainloop_free)> loop(pa_mainloop_new(), &pa_mainloop_free);
    const std::unique_ptr<pa_context, decltype(&pa_context_unref)> context(
        pa_context_new(pa_mainloop_get_api(loop.get()), "quillet test"), &pa_context_unref);
    if (pa_context_connect(context.get(), address.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
        return false;
    while (PA_CONTEXT_IS_GOOD(pa_context_get_state(context.get()))) {
        if (pa_context_get_state(context.get()) == PA_CONTEXT_READY) {
            pa_context_disconnect(context.get());
            return true;
        }
        if (pa_mainloop_iterate(loop.get(), 1, nullptr) < 0)
            return false;
    }
    return false;
}

}  // namespace

TestSoundServer::TestSoundServer()
    : TestSoundServer(Options{})
{
}

TestSoundServer::TestSoundServer(Options options)
    : m_options(options)
{
    // With a cookie of its own, libpulse leaves the home folder alone.
    std::ofstream(m_folder / "cookie") << std::string(256, 'q');
    setEnvironment("PULSE_SERVER", address());
    setEnvironment("PULSE_COOKIE", m_folder / "cookie");
    setEnvironment("PULSE_RUNTIME_PATH", m_folder.path());
    setEnvironment("XDG_RUNTIME_DIR", m_folder.path());
    start();
}

TestSoundServer::~TestSoundServer()
{
    if (m_process != 0)
        kill();
    for (const auto& [name, value] : m_previousEnvironment) {
        if (value)
            setenv(name.c_str(), value->c_str(), 1);
        else
            unsetenv(name.c_str());
    }
}

void TestSoundServer::setEnvironment(const char* name, const std::string& value)
{
    const char* const previous = std::getenv(name);
    m_previousEnvironment.emplace_back(name, previous ? std::optional<std::string>(previous) : std::nullopt);
    REQUIRE(setenv(name, value.c_str(), 1) == 0);
}

std::vector<std::string> TestSoundServer::arguments() const
{
    const std::string sink = "module-null-sink sink_name=" + std::string(sinkName) + " format=float32le rate="
        + std::to_string(m_options.sinkRate) + (m_options.rewinds == NullSinkRewinds::off ? " norewinds=1" : "");
    return { "pulseaudio",
             "-n",
             "--daemonize=no",
             "--exit-idle-time=-1",
             "--use-pid-file=no",
             "--high-priority=no",
             "--realtime=no",
             "--log-target=file:" + (m_folder / "log").native(),
             "-L",
             sink,
             "-L",
             "module-native-protocol-unix auth-anonymous=1 socket=" + (m_folder / "native").native() };
}

void TestSoundServer::start()
{
    REQUIRE(m_process == 0);
    std::error_code ignored;
    std::filesystem::remove(m_folder / "native", ignored);
    const std::vector<std::string> words = arguments();
    std::vector<char*> pointers;
    for (const std::string& word : words)
        pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    const std::string home = "HOME=" + m_folder.path().native();
    std::vector<char*> environment{ const_cast<char*>(home.c_str()) };
    for (char** entry = environ; *entry != nullptr; ++entry)
        if (!std::string_view(*entry).starts_with("HOME=") && !std::string_view(*entry).starts_with("PULSE_SERVER="))
            environment.push_back(*entry);
    environment.push_back(nullptr);

    m_process = fork();
    REQUIRE(m_process >= 0);
    if (m_process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // Where it is allowed: a busy machine should not tear holes into what the tests hear.
        sched_param parameters{};
        parameters.sched_priority = 4;
        sched_setscheduler(0, SCHED_RR, &parameters);
        execvpe(pointers[0], pointers.data(), environment.data());
        _exit(127);
    }
    const auto limit = std::chrono::steady_clock::now() + startLimit;
    while (!serverAnswers(address())) {
        int status = 0;
        REQUIRE(waitpid(m_process, &status, WNOHANG) == 0 && "the server has ended");
        REQUIRE(std::chrono::steady_clock::now() < limit);
        poll(nullptr, 0, 5);
    }
}

void TestSoundServer::kill()
{
    REQUIRE(m_process != 0);
    ::kill(m_process, SIGKILL);
    while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) { }
    m_process = 0;
}

void TestSoundServer::restart() { start(); }

}  // namespace quillet
