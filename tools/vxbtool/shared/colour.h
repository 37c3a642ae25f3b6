#pragma once

#include <string>

namespace CLI {
class App;
}  // namespace CLI

namespace vxbtool {

/// How a report looks.
struct TextStyle {
    bool sourceLines = false;  ///< findings show the line that they are about
    bool colour = false;
};

/// Adds "--colour WHEN", which is auto, always or never.
void addColourOption(CLI::App& app, std::string& when);

/// The style of what is printed on this descriptor: with lines on a terminal, and there with colours
/// too unless NO_COLOR is set or the terminal is a dumb one.
TextStyle styleFor(int descriptor, const std::string& when);

}  // namespace vxbtool
