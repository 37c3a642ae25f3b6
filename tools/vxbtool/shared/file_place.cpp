#include "vxbtool/shared/file_place.h"

#include <filesystem>
#include <map>

#include <sys/stat.h>

#include "files/disk_files.h"

namespace vxbtool {

FilePlace placeOf(const std::string& name) {
    const std::filesystem::path target = mqf2vxb::finalTarget(name);
    struct stat folder {};
    if (::stat(target.parent_path().c_str(), &folder) != 0) {
        return {0, 0, target};
    }
    return {folder.st_dev, folder.st_ino, target.filename()};
}

std::optional<ReplacedInput> replacedInput(std::span<const std::string> inputs,
                                           std::span<const std::string> outputs) {
    std::map<FilePlace, std::string> inputAt;
    for (const std::string& input : inputs) {
        inputAt.try_emplace(placeOf(input), input);
    }
    for (const std::string& output : outputs) {
        if (const auto found = inputAt.find(placeOf(output)); found != inputAt.end()) {
            return ReplacedInput{found->second, output};
        }
    }
    return std::nullopt;
}

}  // namespace vxbtool
