#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "base/seeded_hash.h"

namespace mqf2vxb {

/// How KeyMap hashes a key, and which key marks a free place.
template <class Key>
struct KeyTraits;

template <>
struct KeyTraits<std::uint64_t> {
    static constexpr std::uint64_t none = ~std::uint64_t{0};
    static bool isNone(std::uint64_t key) { return key == none; }
    static std::size_t hash(std::uint64_t key, const HashSeed& seed) {
        constexpr std::uint64_t spread = 0xD6E8FEB86659FD93U;
        constexpr unsigned half = 32;
        std::uint64_t hash = key + seed.low;
        hash = (hash ^ hash >> half) * spread;
        hash = (hash ^ hash >> half) * spread;
        return hash ^ hash >> half;
    }
};

template <>
struct KeyTraits<std::string_view> {
    static constexpr std::string_view none{};
    static bool isNone(std::string_view key) { return key.data() == nullptr; }
    static std::size_t hash(std::string_view key, const HashSeed& seed) {
        return seededHash(key, seed);
    }
};

/// A map that only grows. A key and its value take the first free place from the one that the hash
/// gives onwards, so that an entry needs no allocation of its own and most lookups end where they
/// begin. A key is a 64-bit number other than the one with all bits set, or a text that outlives the
/// map.
template <class Key, class Value>
class KeyMap {
public:
    /// Makes room for this many keys.
    explicit KeyMap(std::size_t keys = 8) : places_(std::bit_ceil(2 * keys + 1)) {}
    KeyMap(const KeyMap&) = delete;
    KeyMap& operator=(const KeyMap&) = delete;
    KeyMap(KeyMap&&) noexcept = default;
    KeyMap& operator=(KeyMap&&) noexcept = default;
    ~KeyMap() = default;

    /// The value of `key`, which `make()` returns when the key is met for the first time.
    template <class Make>
    const Value& find(Key key, Make make) {
        if (Place& place = placeOf(key); !Traits::isNone(place.key)) {
            return place.value;
        }
        if (2 * (size_ + 1) > places_.size()) {
            grow();
        }
        Place& place = placeOf(key);
        place = {key, make()};
        ++size_;
        return place.value;
    }

    /// The value of `key`; null when the map does not have it.
    [[nodiscard]] const Value* find(Key key) const {
        const Place& place = places_[indexOf(key)];
        return Traits::isNone(place.key) ? nullptr : &place.value;
    }

private:
    using Traits = KeyTraits<Key>;

    struct Place {
        Key key = Traits::none;
        Value value{};
    };

    /// The place of the key, or the free one where it would stand.
    Place& placeOf(Key key) { return places_[indexOf(key)]; }
    [[nodiscard]] std::size_t indexOf(Key key) const {
        const std::size_t mask = places_.size() - 1;  // the size is a power of two
        std::size_t i = Traits::hash(key, seed_) & mask;
        while (!Traits::isNone(places_[i].key) && places_[i].key != key) {
            i = (i + 1) & mask;
        }
        return i;
    }

    void grow() {
        const std::vector<Place> before =
            std::exchange(places_, std::vector<Place>(2 * places_.size()));
        for (const Place& place : before) {
            if (!Traits::isNone(place.key)) {
                placeOf(place.key) = place;
            }
        }
    }

    HashSeed seed_ = hashSeed();
    std::size_t size_ = 0;
    std::vector<Place> places_;
};

}  // namespace mqf2vxb
