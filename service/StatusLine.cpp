#include "service/StatusLine.h"

#include <poll.h>
#include <unistd.h>

#include <iostream>

void writeStatusLine(const std::string& line)
{
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) == 1) {
        std::cout.clear();  // a disk that was full may have room again
        std::cout << line << std::endl;
    }
}
