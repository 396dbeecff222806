// A program with two sound threads and a QtRealtimeKit, for realtime_kit_test.py. Each thread says "<thread> <priority>" when
// it starts and after every line on standard input; after "spin" the first one computes until it has lost the real-time
// schedule. It ends with its input.
#include "platform/base/ThreadPriority.h"
#include "platform/schedule/QtRealtimeKit.h"

#include <QCoreApplication>

#include <array>
#include <barrier>
#include <cstdio>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>

#include <unistd.h>

namespace {

using namespace quillet;

std::string command;
std::barrier<> turn(3);

void sayPriority()
{
    constexpr std::array names{ "unchanged", "raised", "realtime" };
    std::printf("%d %s\n", gettid(), names.at(static_cast<std::size_t>(currentThreadPriority())));
    std::fflush(stdout);
}

void makeSound(bool isFirst)
{
    [[maybe_unused]] const ThreadPriority atOnce = raiseThreadPriority();
    sayPriority();
    for (;;) {
        turn.arrive_and_wait();
        if (command.empty())
            return;
        while (isFirst && command == "spin" && currentThreadPriority() == ThreadPriority::realtime) { }
        sayPriority();
        turn.arrive_and_wait();
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QtRealtimeKit kit(realtimeRequests());
    const std::jthread first(makeSound, true);
    const std::jthread second(makeSound, false);
    while (std::getline(std::cin, command)) {
        turn.arrive_and_wait();
        turn.arrive_and_wait();
    }
    command.clear();
    turn.arrive_and_wait();
    return 0;
}
