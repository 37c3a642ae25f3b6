#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace vxbtool::model_text {

/// How many indices at the front follow each other as one ascending run.
std::size_t runLength(std::span<const std::uint32_t> indices);

/// Adds a run to the text as its only number, or as a range.
void appendRun(std::uint32_t first, std::size_t length, std::string& text);

}  // namespace vxbtool::model_text
