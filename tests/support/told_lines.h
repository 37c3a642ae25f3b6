#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "support/memory_files.h"

namespace mqf2vxb::tests {

// A model's text taken apart in the plainest way, without any code of the converter.

using Numbers = std::vector<std::int64_t>;

/// The numbers of a line behind its first words.
inline Numbers numbersOf(const std::string& line, std::size_t skippedWords = 0) {
    std::istringstream in(line);
    std::string word;
    Numbers numbers;
    while (in >> word) {
        if (skippedWords > 0) {
            --skippedWords;
        } else {
            numbers.push_back(std::stoll(word));
        }
    }
    return numbers;
}

/// The lines of a text that writes semicolons for line feeds.
inline std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream in(lines(text));
    std::vector<std::string> result;
    for (std::string line; std::getline(in, line);) {
        result.push_back(line);
    }
    return result;
}

}  // namespace mqf2vxb::tests
