#include "run/convert.h"
#include "run/process.h"

int main(int argumentCount, char** arguments) {
    mqf2vxb::guardOutputs();
    mqf2vxb::run(argumentCount, arguments);
    return 0;  // after every ending: the reports are the only sign of a failure
}
