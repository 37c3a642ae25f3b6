#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxbtool::diff {

/// What two files can differ in.
enum class ChangeKind : std::uint8_t {
    coordinateAdded,
    coordinateRemoved,
    coordinateMatrix,
    coordinateTranslation,
    coordinateAngles,
    coordinateParent,
    coordinateObjects,
    polygonAdded,
    polygonRemoved,
    polygonForm,
    polygonColours,
    polygonTexels,
    polygonTexture,
    polygonWinding,
    polygonNumbers,
    vertexNumber,
    vertexMoved,
    vertexUnused,
    normalNumber,
    normalTurned,
    normalUnused,
    motionAdded,
    motionRemoved,
    motionCoordinates,
    motionStart,
    motionHeaders,
    motionSteps,
    motionTypes,
    stepFrames,
    stepKeyFrame,
    stepOther,
    imageAdded,
    imageRemoved,
    imagePosition,
    imageSize,
    imageDepth,
    imageTexels,
    imageColours,
    imageOrder,
    order,
    words,
};

inline constexpr std::size_t changeKindNum = static_cast<std::size_t>(ChangeKind::words) + 1;

/// The name of a kind, as the JSON has it: "polygon-added".
std::string_view nameOf(ChangeKind kind);

/// One difference.
struct Change {
    ChangeKind kind;
    std::string place;      ///< for instance "coordinate 3"
    std::string text;       ///< what became of it; one line without its end
    std::size_t count = 1;  ///< things that it speaks of, for instance polygons
};

/// The differences of two files. Of each kind only the first are kept, unless all are wanted.
class Changes {
public:
    static constexpr std::size_t keptPerKind = 5;

    explicit Changes(bool all) : all_(all) {}

    [[nodiscard]] bool all() const { return all_; }
    /// Whether another one of this kind would be kept: its text need not be made otherwise.
    [[nodiscard]] bool keeps(ChangeKind kind) const { return all_ || numberOf(kind) < keptPerKind; }
    void add(ChangeKind kind, std::string place, std::string text, std::size_t count = 1);
    /// Adds one that is only counted.
    void count(ChangeKind kind) { ++numbers_[static_cast<std::size_t>(kind)]; }

    /// In the order in which they were added.
    [[nodiscard]] const std::vector<Change>& kept() const { return kept_; }
    [[nodiscard]] bool empty() const { return kept_.empty(); }
    /// How many of a kind were added, kept or not.
    [[nodiscard]] std::size_t numberOf(ChangeKind kind) const {
        return numbers_[static_cast<std::size_t>(kind)];
    }

private:
    bool all_;
    std::vector<Change> kept_;
    std::array<std::size_t, changeKindNum> numbers_{};
};

}  // namespace vxbtool::diff
