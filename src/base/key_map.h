#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace mqf2vxb {

/// A map that only grows: each key stands with its value at the first free place from where its
/// hash leads to. A lookup costs one cache miss at most times, and an entry no allocation of its
/// own, which saves a model of many packet groups a twentieth of its time. The key of 64 set bits
/// is none.
template <class Value>
class KeyMap {
public:
    /// The value of `key`, which `make()` returns when the key is met for the first time.
    template <class Make>
    const Value& find(std::uint64_t key, Make make) {
        if (Place& place = placeOf(key); place.key == key) {
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

private:
    static constexpr std::uint64_t none = ~std::uint64_t{0};

    struct Place {
        std::uint64_t key = none;
        Value value{};
    };

    /// The address of the places is another one in each run, so that nobody can write a model whose
    /// keys all lead to one place.
    [[nodiscard]] std::uint64_t hashOf(std::uint64_t key) const {
        constexpr std::uint64_t spread = 0xD6E8FEB86659FD93U;
        constexpr unsigned half = 32;
        std::uint64_t hash = key + reinterpret_cast<std::uintptr_t>(places_.data());
        hash = (hash ^ hash >> half) * spread;
        hash = (hash ^ hash >> half) * spread;
        return hash ^ hash >> half;
    }

    /// The place of the key, or the free one where it would stand.
    Place& placeOf(std::uint64_t key) {
        const std::size_t mask = places_.size() - 1;  // the size is a power of two
        std::size_t i = hashOf(key) & mask;
        while (places_[i].key != key && places_[i].key != none) {
            i = (i + 1) & mask;
        }
        return places_[i];
    }

    void grow() {
        const std::vector<Place> before =
            std::exchange(places_, std::vector<Place>(2 * places_.size()));
        for (const Place& place : before) {
            if (place.key != none) {
                placeOf(place.key) = place;
            }
        }
    }

    std::size_t size_ = 0;
    std::vector<Place> places_ = std::vector<Place>(16);
};

}  // namespace mqf2vxb
