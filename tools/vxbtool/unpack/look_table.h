#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/key_map.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::unpack {

/// Adds looks to the materials, each distinct one once.
class LookTable {
public:
    explicit LookTable(model_text::Materials& materials) : materials_(materials) {}

    /// The index of a look, whose numbers are as many as its kind has.
    std::uint32_t find(std::uint32_t flag, char shading, char kind,
                       std::span<const std::int32_t> numbers);

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;
    [[nodiscard]] bool equals(std::uint32_t look, std::uint32_t flag, char shading, char kind,
                              std::span<const std::int32_t> numbers) const;

    model_text::Materials& materials_;
    mqf2vxb::KeyMap<std::uint64_t, std::uint32_t> firstOfHash_;
    std::vector<std::uint32_t> next_;  // the next look of the same hash
};

}  // namespace vxbtool::unpack
