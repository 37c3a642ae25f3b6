#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Numbers the key frames over all motions, completes the control words of the steps that show them,
/// and makes `aptype`. Refuses what does not fit its bits; a type without a size rule is only noted,
/// as the layout reports it.
void prepareAnimation(Model& model);

}  // namespace mqf2vxb
