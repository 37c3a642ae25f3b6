#include "vxbtool/shared/json_output.h"

namespace vxbtool {

void JsonOutput::member(std::string_view key, const Json& value) {
    begin(key);
    output_.put(value.dump(-1, ' ', true, Json::error_handler_t::replace));
}

void JsonOutput::words(std::string_view key, std::span<const std::uint32_t> words) {
    begin(key);
    std::string_view separator = "[";
    for (const std::uint32_t word : words) {
        output_.format("{}{}", separator, word);
        separator = ",";
    }
    output_.put(words.empty() ? "[]" : "]");
}

void JsonOutput::open(std::string_view key, char opening, char closing) {
    begin(key);
    output_.put({&opening, 1});
    closings_.push_back(closing);
    empty_ = true;
}

void JsonOutput::close() {
    const char closing = closings_.back();
    closings_.pop_back();
    if (!empty_) {
        newLine();
    }
    output_.put({&closing, 1});
    empty_ = false;
    if (closings_.empty()) {
        output_.put("\n");
    }
}

void JsonOutput::begin(std::string_view key) {
    if (!closings_.empty()) {
        if (!empty_) {
            output_.put(",");
        }
        newLine();
    }
    if (!key.empty()) {
        output_.format("\"{}\": ", key);
    }
    empty_ = false;
}

void JsonOutput::newLine() {
    constexpr std::size_t indent = 2;
    output_.format("\n{:{}}", "", indent * closings_.size());
}

}  // namespace vxbtool
