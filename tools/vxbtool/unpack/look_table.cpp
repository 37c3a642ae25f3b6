#include "vxbtool/unpack/look_table.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "base/seeded_hash.h"
#include "model/material.h"

namespace vxbtool::unpack {

bool LookTable::equals(std::uint32_t look, std::uint32_t flag, char shading, char kind,
                       std::span<const std::int32_t> numbers) const {
    const model_text::Look& other = materials_.looks[look];
    return other.flag == flag && other.shading == shading && other.kind == kind &&
           std::equal(numbers.begin(), numbers.end(),
                      materials_.numbers.begin() + other.firstNumber);
}

std::uint32_t LookTable::find(std::uint32_t flag, char shading, char kind,
                              std::span<const std::int32_t> numbers) {
    std::array<char, 4 * (mqf2vxb::MaterialKind::mostNumbers + 2)> bytes{};
    std::size_t size = 0;
    const auto put = [&](const void* value, std::size_t valueSize) {
        std::memcpy(bytes.data() + size, value, valueSize);
        size += valueSize;
    };
    put(&flag, sizeof flag);
    put(&shading, sizeof shading);
    put(&kind, sizeof kind);
    put(numbers.data(), numbers.size_bytes());
    const std::uint64_t hash = mqf2vxb::seededHash({bytes.data(), size}, mqf2vxb::hashSeed()) >> 1U;

    const auto add = [&] {
        next_.push_back(none);
        return materials_.add(flag, shading, kind, numbers);
    };
    std::uint32_t look = firstOfHash_.find(hash, add);
    while (!equals(look, flag, shading, kind, numbers)) {
        if (next_[look] == none) {
            const std::uint32_t added = add();
            next_[look] = added;
            return added;
        }
        look = next_[look];
    }
    return look;
}

}  // namespace vxbtool::unpack
