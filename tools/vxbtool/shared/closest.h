#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vxbtool {

/// The candidate that a mistyped word was probably meant to be: one that becomes the word by at most a
/// third of its characters being changed, added, left out or exchanged with their neighbours, small and
/// capital letters alike. Empty when there is none.
std::string closest(std::string_view word, std::span<const std::string> candidates);

/// "; did you mean "--out-dir"?", or nothing.
std::string didYouMean(std::string_view word, std::span<const std::string> candidates);

}  // namespace vxbtool
