#include "readers/sequence_names.h"

#include <bit>
#include <functional>
#include <string>
#include <vector>

#include "base/diagnostics.h"
#include "format/format.h"

namespace mqf2vxb {
namespace {

constexpr std::uint32_t largest16Bits = 0xFFFF;
constexpr unsigned highHalf = 16;

/// The labels of one motion by their names: a table of labels, each at the first free place from
/// its name's hash on. A map with a node for each label takes three times as long.
class Labels {
public:
    Labels(const Table<StepName>& labels, std::uint32_t firstSeqNo, const MotionRecord& motion)
        : labels_(labels),
          firstSeqNo_(firstSeqNo),
          motion_(motion),
          places_(std::bit_ceil(4 * labels.size() + 1)) {
        for (std::size_t i = 0; i < labels.size(); ++i) {
            const std::string_view name = labels[i].name;
            const std::uint32_t hash = hashOf(name);
            Place& place = places_[placeOf(name, hash)];
            if (place.label != none) {
                refuse("two steps have the label " + std::string(name));
            }
            place = {hash, static_cast<std::uint32_t>(i)};
        }
    }

    /// The number of the step with this label, or `otherwise`. A number above `largest` is
    /// refused.
    [[nodiscard]] std::uint32_t find(std::string_view name, std::uint32_t otherwise,
                                     std::uint32_t largest = largest16Bits) const {
        const std::uint32_t label = places_[placeOf(name, hashOf(name))].label;
        if (label == none) {
            return otherwise;
        }
        const std::uint32_t number = firstSeqNo_ + labels_[label].step;
        if (number > largest) {
            refuse("the step " + std::string(name) + " has the number " + std::to_string(number) +
                   ", which is above " + std::to_string(largest));
        }
        return number;
    }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    struct Place {
        std::uint32_t hash = 0;
        std::uint32_t label = none;
    };

    static std::uint32_t hashOf(std::string_view name) {
        return static_cast<std::uint32_t>(std::hash<std::string_view>()(name));
    }

    /// Where the label with this name stands, or would. The size is a power of two, and at most a
    /// quarter of the places are taken, so that most names are found at the first.
    [[nodiscard]] std::size_t placeOf(std::string_view name, std::uint32_t hash) const {
        const std::size_t mask = places_.size() - 1;
        std::size_t i = hash & mask;
        while (places_[i].label != none &&
               (places_[i].hash != hash || labels_[places_[i].label].name != name)) {
            i = (i + 1) & mask;
        }
        return i;
    }

    [[noreturn]] void refuse(const std::string& cause) const {
        notCorrectData({motion_.name}, cause);
    }

    const Table<StepName>& labels_;
    std::uint32_t firstSeqNo_;
    const MotionRecord& motion_;
    std::vector<Place> places_;
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
        index.startSeq = labels.find(names.starts[i], format::unresolvedSequence,
                                     format::unresolvedSequence - 1);
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
