#include "vxbtool/import/linear_keys.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/core.h>

#include "vxbtool/import/source.h"

namespace vxbtool::importing {
namespace {

constexpr double samplesOfSecond = 60;
constexpr double mostOfInterval = 4 * 60 * samplesOfSecond;

/// The elements of a cubic spline's keys.
class Spline {
public:
    Spline(std::span<const float> times, std::span<const float> values, std::size_t parts,
           bool rotation)
        : times_(times), values_(values), parts_(parts), rotation_(rotation) {}

    void addKey(std::size_t key, LinearKeys& keys) const {
        keys.times.push_back(times_[key]);
        const auto value = values_.subspan((3 * key + 1) * parts_, parts_);
        keys.values.insert(keys.values.end(), value.begin(), value.end());
    }

    /// Between the key and the one behind it, at a part of the way.
    void addBetween(std::size_t key, double part, LinearKeys& keys) const {
        const double length = static_cast<double>(times_[key + 1]) - times_[key];
        const double square = part * part;
        const double cube = square * part;
        std::array<double, 4> result{};
        double squares = 0;
        for (std::size_t i = 0; i < parts_; ++i) {
            const auto at = [&](std::size_t k, std::size_t element) {
                return static_cast<double>(values_[(3 * k + element) * parts_ + i]);
            };
            result.at(i) = (2 * cube - 3 * square + 1) * at(key, 1) +
                           (cube - 2 * square + part) * length * at(key, 2) +
                           (3 * square - 2 * cube) * at(key + 1, 1) +
                           (cube - square) * length * at(key + 1, 0);
            squares += result.at(i) * result.at(i);
        }
        const double unit = rotation_ && squares > 0 ? std::sqrt(squares) : 1;
        keys.times.push_back(static_cast<float>(times_[key] + part * length));
        for (std::size_t i = 0; i < parts_; ++i) {
            keys.values.push_back(static_cast<float>(result.at(i) / unit));
        }
    }

private:
    std::span<const float> times_;
    std::span<const float> values_;
    std::size_t parts_;
    bool rotation_;
};

/// Into how many pieces the way between two keys is cut.
std::size_t piecesOf(float from, float to) {
    const double pieces = std::ceil((static_cast<double>(to) - from) * samplesOfSecond);
    if (!(pieces >= 1)) {
        return 1;
    }
    return static_cast<std::size_t>(std::min(pieces, mostOfInterval));
}

}  // namespace

LinearKeys linearKeys(Interpolation from, std::span<const float> times,
                      std::span<const float> values, std::size_t parts, bool rotation,
                      std::size_t& made) {
    LinearKeys keys;
    const Spline spline(times, values, parts, rotation);
    for (std::size_t key = 0; key < times.size(); ++key) {
        if (made + keys.values.size() > mostKeyValues) {
            throw ImportFault(fmt::format("its splines and leaps take more than {} values of keys; "
                                          "--no-motions leaves motions out",
                                          mostKeyValues));
        }
        const bool last = key + 1 == times.size();
        if (from == Interpolation::cubic) {
            spline.addKey(key, keys);
            const std::size_t pieces = last ? 1 : piecesOf(times[key], times[key + 1]);
            for (std::size_t piece = 1; piece < pieces; ++piece) {
                spline.addBetween(key, static_cast<double>(piece) / static_cast<double>(pieces),
                                  keys);
            }
            continue;
        }
        const auto value = values.subspan(key * parts, parts);
        const auto add = [&](float time) {
            keys.times.push_back(time);
            keys.values.insert(keys.values.end(), value.begin(), value.end());
        };
        add(times[key]);
        if (from == Interpolation::step && !last) {
            constexpr float leap = 0.001F;  // seconds
            add(std::max(times[key + 1] - leap, (times[key] + times[key + 1]) / 2));
        }
    }
    made += keys.values.size();
    return keys;
}

}  // namespace vxbtool::importing
