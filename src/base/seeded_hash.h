#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace mqf2vxb {

/// The secret of all hashes of this process, different in each run, so that nobody can write a model
/// whose keys all hash alike. Only the speed of lookups depends on it.
struct HashSeed {
    std::uint64_t low;
    std::uint64_t high;
};
const HashSeed& hashSeed();

namespace seeded_hash {

/// The two halves of the product joined by exclusive or: each bit of the result depends on all bits
/// of both numbers.
inline std::uint64_t folded(std::uint64_t a, std::uint64_t b) {
    __extension__ using Product = unsigned __int128;
    const Product product = static_cast<Product>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
}

template <class Word>
std::uint64_t wordAt(const char* bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

}  // namespace seeded_hash

/// The hash of a text under a seed.
inline std::size_t seededHash(std::string_view text, const HashSeed& seed) {
    using seeded_hash::folded;
    using seeded_hash::wordAt;
    constexpr std::size_t wide = sizeof(std::uint64_t);
    constexpr std::size_t narrow = sizeof(std::uint32_t);
    std::uint64_t state = seed.high ^ text.size();
    for (; text.size() > 2 * wide; text.remove_prefix(2 * wide)) {
        state = folded(wordAt<std::uint64_t>(text.data()) ^ seed.low,
                       wordAt<std::uint64_t>(text.data() + wide) ^ state);
    }
    // What is left is covered by two words, which may overlap.
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (text.size() >= wide) {
        first = wordAt<std::uint64_t>(text.data());
        last = wordAt<std::uint64_t>(text.data() + text.size() - wide);
    } else if (text.size() >= narrow) {
        first = wordAt<std::uint32_t>(text.data());
        last = wordAt<std::uint32_t>(text.data() + text.size() - narrow);
    } else {
        for (const char c : text) {
            first = first << 8U | static_cast<unsigned char>(c);
        }
    }
    return folded(folded(first ^ seed.low, last ^ state), seed.low ^ seed.high);
}

/// The hash under the seed of the process, for the maps and sets of the standard library.
struct SeededHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return seededHash(text, hashSeed()); }
};

}  // namespace mqf2vxb
