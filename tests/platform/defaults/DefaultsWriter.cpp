// defaults_writer FILE NAME COUNT: writes the integers 0 to COUNT - 1 (or without end, if COUNT is 0) under "NAME.<integer>"
// and prints each on a line of its own once it is stored.
#include "platform/defaults/SqliteDefaultsDomain.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 4)
        return 2;
    quillet::SqliteDefaultsDomain domain(arguments[1]);
    const std::string name = arguments[2];
    const long count = std::atol(arguments[3]);
    for (long i = 0; count == 0 || i < count; ++i) {
        domain.setInteger(name + '.' + std::to_string(i), i);
        const std::string line = std::to_string(i) + '\n';
        if (::write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
            return 1;
    }
    return 0;
}
