#include "vxbtool/shared/vxb_input.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <fmt/core.h>

#include "vxb/vxb_reader.h"
#include "vxbtool/shared/file_kind.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/standard_streams.h"

namespace vxbtool {
namespace {

using mqf2vxb::Severity;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void cannotBeRead() { throw UnreadableFile(std::strerror(errno)); }

[[noreturn]] void tooLarge() {
    throw UnreadableFile(fmt::format("it is larger than {} bytes", largestVxbFile));
}

/// All bytes of a file. The size that the system tells is a guess only: a pipe has none, and a file
/// may grow while it is read.
std::string readBytes(const std::string& name) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(inputPath(name).c_str(), "rb"));
    struct stat status {};
    if (!file || fstat(fileno(file.get()), &status) != 0) {
        cannotBeRead();
    }
    if (S_ISDIR(status.st_mode)) {
        throw UnreadableFile(std::strerror(EISDIR));
    }
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) {
        throw UnreadableFile("it is a device");  // which may never end
    }
    const auto announced = static_cast<std::size_t>(std::max<off_t>(status.st_size, 0));
    if (announced > largestVxbFile) {
        tooLarge();
    }
    constexpr std::size_t block = std::size_t{1} << 16U;
    std::string bytes;
    bytes.reserve(announced + block);
    for (std::size_t got = block; got == block;) {
        const std::size_t size = bytes.size();
        bytes.resize(size + block);
        got = std::fread(bytes.data() + size, 1, block, file.get());
        bytes.resize(size + got);
        if (bytes.size() > largestVxbFile) {
            tooLarge();
        }
    }
    if (std::ferror(file.get()) != 0) {
        cannotBeRead();
    }
    return bytes;
}

}  // namespace

mqf2vxb::VxbFile readVxbFile(const std::string& name) {
    const std::string bytes = readBytes(name);
    if (bytes.starts_with('@')) {
        if (std::string kind = fileKind(bytes); !kind.empty()) {
            throw UnreadableFile(kind);
        }
    }
    return mqf2vxb::readVxb(bytes);
}

std::optional<mqf2vxb::VxbFile> readForShow(const std::string& name) {
    try {
        mqf2vxb::VxbFile file = readVxbFile(name);
        const std::size_t errors = file.findings.count(Severity::error);
        if (errors > 0) {
            fmt::print(stderr,
                       "{0}: {1} error{2} found, so that what is shown may be wrong; \"vxbtool "
                       "check {0}\" tells more\n",
                       printable(name), errors, errors == 1 ? " was" : "s were");
        }
        return file;
    } catch (const UnreadableFile& error) {
        fmt::print(stderr, "{}: the file cannot be read: {}\n", printable(name), error.what());
        return std::nullopt;
    }
}

}  // namespace vxbtool
