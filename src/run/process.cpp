#include "run/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace mqf2vxb {

void guardOutputs() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            // The system gives the lowest free number, which is this one. It is opened the wrong way
            // round, so that reading from it or writing to it fails.
            ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace mqf2vxb
