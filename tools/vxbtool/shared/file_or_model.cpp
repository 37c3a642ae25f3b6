#include "vxbtool/shared/file_or_model.h"

#include <cstddef>
#include <filesystem>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/shared/in_memory.h"
#include "vxbtool/shared/model_files.h"
#include "vxbtool/shared/vxb_input.h"

namespace vxbtool {

mqf2vxb::VxbFile readFileOrModel(const std::string& name, const mqf2vxb::RunOptions& options,
                                 const std::string& base) {
    if (std::filesystem::path(name).extension() == ".mqf") {
        ModelFiles files(base);
        try {
            return mqf2vxb::readVxb(convertInMemory(name, options, files));
        } catch (const mqf2vxb::Report& report) {
            throw UnusableInput(fmt::format("{}: {}\n{}", name, report.cause(), report.text()));
        }
    }
    try {
        return readVxbFile(name);
    } catch (const UnreadableFile& error) {
        throw UnusableInput(fmt::format("{}: the file cannot be read: {}", name, error.what()));
    }
}

void requireSound(const std::string& name, const mqf2vxb::VxbFile& file) {
    const std::size_t errors = file.findings.count(mqf2vxb::Severity::error);
    if (errors > 0) {
        throw UnusableInput(
            fmt::format("{}: no sound VXB file: {} error{}; \"vxbtool check {}\" tells more", name,
                        errors, errors == 1 ? "" : "s", name));
    }
}

}  // namespace vxbtool
