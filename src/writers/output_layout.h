#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "model/model.h"

namespace mqf2vxb {

/// Where everything stands in the VXB file: word offsets from its first word, without bit 31.
/// Computed once, when every table is final.
struct OutputLayout {
    /// The first coordinate with objects, if there is one.
    std::optional<std::int32_t> FirstObjectCoordinate;

    std::uint32_t coordinateTop = 0;  ///< 0 without coordinates
    std::uint32_t primitiveGlobalHeaderTop = 0;

    /// A global header of the primitive header section; absent when its size is 0.
    struct GlobalHeader {
        std::uint32_t offset = 0;
        std::uint32_t size = 0;
        std::uint32_t coordinateTops = 0;  ///< how many Coordinate Top words it has

        [[nodiscard]] bool present() const { return size > 0; }
    };
    GlobalHeader independentHeader;
    GlobalHeader sharedHeader;
    GlobalHeader animationHeader;
    GlobalHeader imageHeader;

    /// The first header of every `malprimh` entry, in table order.
    std::vector<std::uint32_t> coordinateHeaders;
    /// Behind all of them, also when there is no shared polygon.
    std::uint32_t sharedPrimitiveHeader = 0;

    std::uint32_t independentPrimitiveTop = 0;
    std::uint32_t sharedPrimitiveTop = 0;
    /// The packet groups: those from independentPrimitiveTop, then those from sharedPrimitiveTop.
    std::vector<std::uint32_t> groups;

    /// The three blocks of the vertex or the normal section.
    struct PointSection {
        std::uint32_t independentTop = 0;
        std::uint32_t sharedTop = 0;
        std::uint32_t calculatedTop = 0;
    };
    PointSection vertices;
    PointSection normals;

    std::uint32_t animationSection = 0;
    std::uint32_t complementFunctionTop = 0;
    std::uint32_t controlTop = 0;
    std::uint32_t matrixTop = 0;

    std::uint32_t imageSection = 0;
    std::uint32_t imageTop = 0;
    std::uint32_t clutTop = 0;  ///< 0 when no image has a CLUT

    std::uint32_t fileSize = 0;
};

/// Whether the model draws a polygon that is not shared.
bool hasIndependentPolygons(const Model& model);
/// Whether the file has an image section: images are wanted, and the model has some.
bool imagesWritten(const Model& model);

/// Sums up the sizes of everything in the file. Reports a type without a size rule and a file
/// that reaches bit 31.
OutputLayout computeLayout(const Model& model);

}  // namespace mqf2vxb
