#pragma once

namespace mqf2vxb {

/// To be called first by a program that writes files. Opens the standard descriptors that are
/// closed, so that no output gets the number of one and finds messages among its bytes; what is
/// written to these fails. Past a limit on the size of files a write fails too, where it would end
/// the program.
void guardOutputs();

}  // namespace mqf2vxb
