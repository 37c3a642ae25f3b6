#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "vxbtool/shared/text_output.h"

namespace vxbtool {

using Json = nlohmann::ordered_json;

/// Writes JSON piece by piece, so that a large document never stands in memory. What is opened is
/// indented, with a line for each member; a value stands on its line whole.
class JsonOutput {
public:
    explicit JsonOutput(TextOutput& output) : output_(output) {}

    // Members of an object have a key, elements of an array have none.
    void openObject(std::string_view key = {}) { open(key, '{', '}'); }
    void openArray(std::string_view key = {}) { open(key, '[', ']'); }
    void close();
    void value(const Json& value) { member({}, value); }
    void member(std::string_view key, const Json& value);
    /// An array of words.
    void words(std::string_view key, std::span<const std::uint32_t> words);

private:
    void open(std::string_view key, char opening, char closing);
    void begin(std::string_view key);
    void newLine();

    TextOutput& output_;
    std::vector<char> closings_;  ///< of what is open
    bool empty_ = true;           ///< whether the innermost has nothing in it yet
};

}  // namespace vxbtool
