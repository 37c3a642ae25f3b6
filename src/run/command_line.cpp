#include "run/command_line.h"

#include <string_view>

#include "base/diagnostics.h"
#include "files/inputs.h"
#include "text/scan.h"

namespace mqf2vxb {
namespace {

void checkNameLength(const std::string& name) {
    if (name.size() > longestName) {
        notCorrectData({name}, "name longer than 255 characters");
    }
}

}  // namespace

std::string bannerText() {
    return "\n"
           "mqf2vxb version 1.5\n"
           "Converts a model description (MQF) into a binary model (VXB).\n";
}

std::string usageText() {
    return "\n"
           ">mqf2vxb [option] MQFfile name\n"
           "-------------------------------------------------------------\n"
           "[-s 1.0(default)]    Zoom in,zoom out\n"
           "[-o file-name]       Set output file name\n"
           "                     (default:MQFname.vxb)\n"
           "[-bin2cl file-name]  Hex output\n"
           "[-ni]                Not output image data\n";
}

std::size_t getOptions(std::span<const char* const> arguments, RunOptions& options) {
    std::size_t index = 1;
    while (index < arguments.size()) {
        const std::string_view option = arguments[index];
        if (option == "-ni") {
            options.imageOutput = false;
            ++index;
            continue;
        }
        if (option != "-s" && option != "-o" && option != "-bin2cl") {
            checkNameLength(arguments[index]);
            return index;
        }
        if (index + 1 == arguments.size()) {
            return arguments.size();
        }
        const std::string value = arguments[index + 1];
        if (option == "-s") {
            options.scale = 0.0F;
            std::string_view text = value;
            scanReal(text, options.scale);
        } else if (option == "-o") {
            checkNameLength(value);
            options.outputNameGiven = true;
            options.outputName = value;
        } else {
            checkNameLength(value);
            options.hexOutput = true;
            options.hexName = value;
        }
        index += 2;
    }
    return arguments.size();
}

void makeOutputName(const std::string& mqfName, RunOptions& options) {
    const std::string name = options.outputNameGiven ? options.outputName : mqfName;
    options.outputName = name.substr(0, name.find('.')) + ".vxb";
    checkNameLength(options.outputName);
}

}  // namespace mqf2vxb
