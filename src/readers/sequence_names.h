#pragma once

#include <cstdint>
#include <string_view>

#include "base/table.h"
#include "model/motion.h"

namespace mqf2vxb {

/// A name that belongs to a step: the label before it, or the target of a GOTO.
struct StepName {
    std::string_view name;
    std::uint32_t step = 0;  ///< index into MotionRecord::seqTable
};

/// The labels that a START or KEY2 line names.
struct HeaderNames {
    std::string_view name;
    std::string_view second;  ///< KEY2 only
};

/// The names in one motion file, which are views into it. The model holds the numbers of the steps
/// that they stand for.
struct SequenceNames {
    Table<std::string_view> starts{"Animation Sequence Data Base"};  ///< by index record
    Table<HeaderNames> headers{"Animation Sequence Data Base"};      ///< of all index records
    Table<StepName> labels{"Animation Sequence Data Base"};
    Table<StepName> targets{"Animation Sequence Data Base"};

    /// Forgets all names and keeps the room.
    void clear();
};

/// Puts the numbers of the named steps into the motion; `firstSeqNo` is that of its first step
/// over all motions. A name that labels nothing leaves what the format has for it. Refuses a label
/// of two steps and a number that does not fit its bits.
void resolveNames(const SequenceNames& names, std::uint32_t firstSeqNo, MotionRecord& motion);

}  // namespace mqf2vxb
