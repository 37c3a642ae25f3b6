#include "readers/sequence_names.h"

#include <string>

#include "base/diagnostics.h"
#include "base/key_map.h"
#include "format/format.h"

namespace mqf2vxb {
namespace {

constexpr std::uint32_t largest16Bits = 0xFFFF;
constexpr unsigned highHalf = 16;

/// The labels of one motion.
class Labels {
public:
    Labels(const Table<StepName>& labels, std::uint32_t firstSeqNo, const MotionRecord& motion)
        : firstSeqNo_(firstSeqNo), motion_(motion), steps_(labels.size()) {
        for (const StepName& label : labels) {
            bool isNew = false;
            steps_.find(label.name, [&] {
                isNew = true;
                return label.step;
            });
            if (!isNew) {
                refuse("two steps have the label " + std::string(label.name));
            }
        }
    }

    /// The number of the step with this label, or `otherwise`. One that does not fit 16 bits is
    /// refused.
    [[nodiscard]] std::uint32_t find(std::string_view name, std::uint32_t otherwise) const {
        const std::uint32_t* const step = steps_.find(name);
        if (step == nullptr) {
            return otherwise;
        }
        const std::uint32_t number = firstSeqNo_ + *step;
        if (number > largest16Bits) {
            refuse("the step " + std::string(name) + " has the number " + std::to_string(number) +
                   ", which is above 65535");
        }
        return number;
    }

private:
    [[noreturn]] void refuse(const std::string& cause) const {
        notCorrectData({motion_.name}, cause);
    }

    std::uint32_t firstSeqNo_;
    const MotionRecord& motion_;
    KeyMap<std::string_view, std::uint32_t> steps_;  // by label
};

}  // namespace

void SequenceNames::clear() {
    starts.clear();
    headers.clear();
    labels.clear();
    targets.clear();
}

void resolveNames(const SequenceNames& names, std::uint32_t firstSeqNo, MotionRecord& motion) {
    const Labels labels(names.labels, firstSeqNo, motion);
    const HeaderNames* headerNames = names.headers.records().data();
    for (std::size_t i = 0; i < motion.indexTable.size(); ++i) {
        AnimationIndexRecord& index = motion.indexTable[i];
        index.startSeq = labels.find(names.starts[i], format::unresolvedSequence);
        for (AnimationSequenceHeaderRecord& header : index.seqHeaderTable) {
            const auto [name, second] = *headerNames++;
            header.value |= labels.find(name, 0);
            if (!second.empty() && second != name) {
                header.value |= labels.find(second, 0) << highHalf;
            }
        }
    }
    for (const StepName& target : names.targets) {
        motion.seqTable[target.step].control |= labels.find(target.name, 0);
    }
}

}  // namespace mqf2vxb
