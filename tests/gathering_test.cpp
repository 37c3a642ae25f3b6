#include <gtest/gtest.h>

#include <algorithm>

#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

/// Gathers as the format describes it: sweeps over the whole table with exchanges.
std::vector<int> sweep(const std::vector<int>& coordinate, const std::vector<bool>& shared,
                       const std::vector<int>& headers) {
    std::vector<int> order(coordinate.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = static_cast<int>(i);
    }
    const auto at = [&](std::size_t i) { return static_cast<std::size_t>(order[i]); };
    std::vector<bool> moved(order.size());
    std::size_t t =
        order.size() - static_cast<std::size_t>(std::count(shared.begin(), shared.end(), true));
    for (const int header : headers) {
        for (bool any = true; any;) {
            any = false;
            for (std::size_t i = 0; i < order.size(); ++i) {
                if (!moved[at(i)] && shared[at(i)] && coordinate[at(i)] == header) {
                    std::swap(order[i], order[t]);
                    moved[at(t++)] = true;
                    any = true;
                }
            }
        }
    }
    return order;
}

TEST(Shared, GatheringOrderIsThatOfTheSweeps) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        unsigned state = seed;
        const auto random = [&](unsigned below) {
            state = state * 1103515245U + 12345U;
            return (state >> 16U) % below;
        };
        const std::size_t number = 6 + random(30);
        std::vector<int> coordinate(number);
        std::vector<std::vector<int>> members(3);
        for (std::size_t i = 0; i < number; ++i) {
            coordinate[i] = static_cast<int>(i < 3 ? i : random(3));
            members[static_cast<std::size_t>(coordinate[i])].push_back(static_cast<int>(i));
        }
        // Every triangle has a vertex of each coordinate; their headers come in vertex order.
        std::vector<bool> shared(number);
        std::string polygons;
        for (int p = 0; p < 4; ++p) {
            polygons += "0";
            for (const std::vector<int>& list : members) {
                const int v = list[random(static_cast<unsigned>(list.size()))];
                shared[static_cast<std::size_t>(v)] = true;
                polygons += " " + std::to_string(v);
            }
            polygons += " 0 0 0 0 0;";
        }
        std::vector<int> headers;
        ModelFiles model;
        model.geo = std::to_string(number) + " 0 4;";
        model.frm = "=NULL;3;" + repeated(3, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0;");
        for (std::size_t i = 0; i < number; ++i) {
            model.geo += std::to_string(i) + ";";
            model.frm += std::to_string(coordinate[i]) + " 1 " + std::to_string(i) + ";";
            if (shared[i] && std::count(headers.begin(), headers.end(), coordinate[i]) == 0) {
                headers.push_back(coordinate[i]);
            }
        }
        model.geo += polygons;
        model.srf = "1;0-3 0 F C";
        // The number of every vertex is its x.
        std::vector<int> written;
        const bool all = std::count(shared.begin(), shared.end(), false) == 0;
        const Words words =
            between(convertFiles(model, withHex()).hex(),
                    all ? "/* Shared Vertex Top(Vertex Top) */" : "/* Vertex Top */",
                    "/* Calculated Shared Vertex Top */");
        for (std::size_t i = 0; i < words.size(); i += 2) {
            written.push_back(static_cast<int>(words[i]));
        }
        EXPECT_EQ(written, sweep(coordinate, shared, headers)) << "seed " << seed;
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
