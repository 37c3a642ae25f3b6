#include "base/seeded_hash.h"

#include <bit>
#include <cstring>
#include <random>

namespace mqf2vxb {
namespace {

/// SipHash with one round for each word and three at the end: the least that keeps a secret seed from
/// being worked around.
class SipHash {
public:
    explicit SipHash(const HashSeed& seed)
        : a_(seed.low ^ 0x736F6D6570736575U),
          b_(seed.high ^ 0x646F72616E646F6DU),
          c_(seed.low ^ 0x6C7967656E657261U),
          d_(seed.high ^ 0x7465646279746573U) {}

    void add(std::uint64_t word) {
        d_ ^= word;
        round();
        a_ ^= word;
    }

    std::uint64_t finish() {
        c_ ^= 0xFF;
        round();
        round();
        round();
        return a_ ^ b_ ^ c_ ^ d_;
    }

private:
    void round() {
        a_ += b_;
        b_ = std::rotl(b_, 13) ^ a_;
        a_ = std::rotl(a_, 32);
        c_ += d_;
        d_ = std::rotl(d_, 16) ^ c_;
        a_ += d_;
        d_ = std::rotl(d_, 21) ^ a_;
        c_ += b_;
        b_ = std::rotl(b_, 17) ^ c_;
        c_ = std::rotl(c_, 32);
    }

    std::uint64_t a_;
    std::uint64_t b_;
    std::uint64_t c_;
    std::uint64_t d_;
};

HashSeed randomSeed() {
    std::random_device random;
    const auto word = [&random] { return std::uint64_t{random()} << 32U | random(); };
    return {word(), word()};
}

}  // namespace

const HashSeed& hashSeed() {
    static const HashSeed seed = randomSeed();
    return seed;
}

std::size_t SeededHash::operator()(std::string_view text) const {
    SipHash hash(hashSeed());
    const std::uint64_t length = text.size();
    for (; text.size() >= sizeof(std::uint64_t); text.remove_prefix(sizeof(std::uint64_t))) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        hash.add(word);
    }
    std::uint64_t last = length << 56U;
    for (std::size_t i = 0; i < text.size(); ++i) {
        last |= std::uint64_t{static_cast<unsigned char>(text[i])} << 8U * i;
    }
    hash.add(last);
    return hash.finish();
}

}  // namespace mqf2vxb
