#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace bench {

struct MadeModel {
    /// Names and contents; the first one is the model description.
    std::vector<std::pair<std::string, std::string>> files;
    std::size_t materialRecords = 0;
};

/// A kind of large model that stresses one part of a conversion.
struct Family {
    const char* name;
    const char* description;  ///< at full size
    /// Makes the model at `eighths` eighths of its full size.
    MadeModel (*make)(std::int32_t eighths, std::uint32_t seed);
};

std::span<const Family> families();

/// A small model with a file of nearly every kind.
MadeModel makeTiny(std::uint32_t seed);

}  // namespace bench
