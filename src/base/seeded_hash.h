#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mqf2vxb {

/// The secret of all hashes of this process. It is another one in each run, so that nobody can write
/// a model whose keys all hash alike; nothing but the speed of lookups depends on it.
struct HashSeed {
    std::uint64_t low;
    std::uint64_t high;
};
const HashSeed& hashSeed();

/// The hash of a text under the seed, for the maps and sets of the standard library too.
struct SeededHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const;
};

}  // namespace mqf2vxb
