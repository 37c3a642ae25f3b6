#include "vxbtool/info/summary.h"

#include <algorithm>
#include <utility>

#include "vxbtool/shared/motion_steps.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

/// Parents before their children, both in the order of their numbers.
std::vector<TreeRow> treeOf(const std::vector<Coordinate>& coordinates) {
    std::vector<std::vector<std::uint32_t>> children(coordinates.size());
    std::vector<TreeRow> waiting;
    for (std::size_t i = coordinates.size(); i-- > 0;) {
        const auto coordinate = static_cast<std::uint32_t>(i);
        if (coordinates[i].parent) {
            children[*coordinates[i].parent].push_back(coordinate);
        } else {
            waiting.push_back({coordinate, 0});
        }
    }
    std::vector<TreeRow> tree;
    while (!waiting.empty()) {
        const TreeRow row = waiting.back();
        waiting.pop_back();
        tree.push_back(row);
        for (const std::uint32_t child : children[row.coordinate]) {
            waiting.push_back({child, row.depth + 1});
        }
    }
    return tree;
}

void countPolygons(const VxbFile& file, FileSummary& summary) {
    for (const PacketGroup& group : file.packetGroups) {
        FormSummary& form = summary.forms[group.code];
        form.polygons += group.polygons;
        form.words += group.words;
        form.strips += group.form != nullptr && group.form->strip() ? group.number : 0;
        summary.polygons += group.polygons;
    }
    summary.polygonsByCoordinate.resize(file.coordinates.size());
    for (const PrimitiveHeader& header : file.primitiveHeaders) {
        for (std::uint32_t i = 0; header.coordinate && i < header.descriptionNum; ++i) {
            const TypeDescription& description = file.descriptions[header.firstDescription + i];
            if (description.group) {
                const PacketGroup& group = file.packetGroups[*description.group];
                summary.forms[group.code].byCoordinate[*header.coordinate] += group.polygons;
                summary.polygonsByCoordinate[*header.coordinate] += group.polygons;
            }
        }
    }
}

void addToBox(const VxbFile& file, const PointBlock& block, FileSummary& summary) {
    for (std::uint32_t i = 0; i < block.number; ++i) {
        const Point point = file.point(block, i);
        if (!summary.box) {
            summary.box = {point, point};
        }
        auto& [least, greatest] = *summary.box;
        for (const auto component : {&Point::x, &Point::y, &Point::z}) {
            least.*component = std::min(least.*component, point.*component);
            greatest.*component = std::max(greatest.*component, point.*component);
        }
    }
}

void countSteps(const VxbFile& file, FileSummary& summary) {
    const Animation& animation = file.animation;
    const std::vector<StepRange> ranges = stepsOfMotions(animation);
    for (std::size_t m = 0; m < ranges.size(); ++m) {
        MotionSummary motion{animation.motions[m].coordinateNum, ranges[m].end - ranges[m].first,
                             0};
        for (std::uint32_t step = ranges[m].first; step < ranges[m].end; ++step) {
            const std::uint32_t word = file.words[animation.controlOffset + step];
            motion.keyFrames += controlWord(word).kind == ControlKind::keyFrame ? 1 : 0;
        }
        summary.motions.push_back(motion);
    }
}

}  // namespace

FileSummary summarise(const VxbFile& file) {
    FileSummary summary;
    for (const SectionExtent& extent : file.sections()) {
        summary.sectionWords[static_cast<std::size_t>(extent.section)] += extent.words;
    }
    summary.tree = treeOf(file.coordinates);
    countPolygons(file, summary);
    addToBox(file, file.vertices.independent, summary);
    addToBox(file, file.vertices.shared, summary);
    countSteps(file, summary);
    return summary;
}

}  // namespace vxbtool
