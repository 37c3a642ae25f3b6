#include "run/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace mqf2vxb {

void guardOutputs() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            // The lowest number that is free, so this one; open for what nobody does with it.
            ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace mqf2vxb
