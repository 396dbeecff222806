#include "tests/support/TestSoundServer.h"

#include "tests/support/Command.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <utility>

#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillet {

TestSoundServer::TestSoundServer(int sinkRate)
    : m_sinkRate(sinkRate)
{
    // With a cookie of its own, libpulse leaves the home folder alone.
    std::ofstream(m_folder / "cookie") << std::string(256, 'q');
    std::ofstream(m_folder / "script") << "load-module module-null-sink sink_name=" << sinkName
                                       << " format=float32le norewinds=1 rate=" << m_sinkRate
                                       << "\nload-module module-native-protocol-unix auth-anonymous=1 socket="
                                       << (m_folder / "native").native() << '\n';
    for (const auto& [name, value] :
         { std::pair("PULSE_SERVER", address()), std::pair("PULSE_COOKIE", (m_folder / "cookie").native()),
           std::pair("PULSE_RUNTIME_PATH", m_folder.path().native()), std::pair("XDG_RUNTIME_DIR", m_folder.path().native()) })
        REQUIRE(setenv(name, value.c_str(), 1) == 0);
    start();
}

TestSoundServer::~TestSoundServer()
{
    if (m_process != 0)
        kill();
}

void TestSoundServer::start()
{
    REQUIRE(m_process == 0);
    m_process = fork();
    REQUIRE(m_process >= 0);
    if (m_process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // Where it is allowed: a busy machine should not tear holes into what the tests hear.
        sched_param parameters{};
        parameters.sched_priority = 4;
        sched_setscheduler(0, SCHED_RR, &parameters);
        execlp("sh", "sh", "-c",
               "unset PULSE_SERVER; HOME=$1 exec pulseaudio -n -F \"$1/script\" --daemonize=no --exit-idle-time=-1 "
               "--use-pid-file=no --high-priority=no --realtime=no --log-target=\"file:$1/log\"",
               "sh", m_folder.path().c_str(), nullptr);
        _exit(127);
    }
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (runCommand({ "pactl", "info" }).status != 0) {
        int status = 0;
        REQUIRE(waitpid(m_process, &status, WNOHANG) == 0 && "the server has ended");
        REQUIRE(std::chrono::steady_clock::now() < limit);
    }
}

void TestSoundServer::kill()
{
    REQUIRE(m_process != 0);
    ::kill(m_process, SIGKILL);
    while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) { }
    m_process = 0;
}

}  // namespace quillet
