#pragma once

#include <string>
#include <string_view>

namespace vxbtool {

// Names, IDs and texts from files may hold anything. What they bring into a text for people passes
// one of these, so that no control character of theirs reaches a terminal.

/// One line: each control character but a tab is a question mark. Bytes that are not UTF-8 stay,
/// unless a terminal could take them for control characters.
std::string printable(std::string_view text);
/// The same for a text of several lines, which stay; a carriage return at a line's end is left out.
std::string printableLines(std::string_view text);

}  // namespace vxbtool
