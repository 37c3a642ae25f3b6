#include "base/seeded_hash.h"

#include <random>

namespace mqf2vxb {

const HashSeed& hashSeed() {
    static const HashSeed seed = [] {
        std::random_device random;
        const auto word = [&random] { return std::uint64_t{random()} << 32U | random(); };
        return HashSeed{word(), word()};
    }();
    return seed;
}

}  // namespace mqf2vxb
