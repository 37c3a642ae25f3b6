#include "driver/file_system.h"

#include <algorithm>
#include <cstdio>
#include <system_error>
#include <utility>

#include "driver/diagnostics.h"

namespace mqf2vxb {
namespace {

namespace fs = std::filesystem;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

class DiskOutputFile final : public OutputFile {
public:
    explicit DiskOutputFile(FileHandle file) : file_(std::move(file)) {}

    bool write(std::string_view bytes) override {
        return std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
    }
    bool close() override { return std::fclose(file_.release()) == 0; }

private:
    FileHandle file_;
};

void checkFileSize(const std::string& name, std::uintmax_t size) {
    if (size > largestFile) {
        notCorrectData({name}, "the file is larger than 2147483648 bytes");
    }
}

}  // namespace

fs::path finalTarget(const std::string& name) {
    constexpr int mostLinks = 40;
    std::error_code error;
    fs::path path = fs::absolute(name, error);
    for (int i = 0; i < mostLinks && fs::is_symlink(path, error); ++i) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return fs::weakly_canonical(path, error);
}

/// Small files share memory, so that many of them get large pages too, and the next ones reuse what
/// nobody holds any more: a model of hundreds of images takes a quarter less time.
FileContents DiskFileSystem::room(std::size_t size) {
    constexpr std::size_t smallFile = std::size_t{1} << 18U;
    constexpr std::size_t smallestChunk = std::size_t{1} << 17U;
    constexpr std::size_t largestChunk = std::size_t{1} << 25U;
    const std::size_t needed = size + FileContents::padding;
    if (needed > smallFile) {
        return FileContents(size);
    }
    if (chunk_.use_count() == 1) {
        used_ = 0;
    }
    if (needed > chunkSize_ - used_) {
        const std::size_t chunkSize =
            std::max(needed, std::clamp(2 * chunkSize_, smallestChunk, largestChunk));
        chunk_ = std::make_shared_for_overwrite<char[]>(chunkSize);
        chunkSize_ = chunkSize;
        used_ = 0;
    }
    char* const start = chunk_.get() + std::exchange(used_, used_ + needed);
    return {std::shared_ptr<char[]>(chunk_, start), size};
}

std::optional<FileContents> DiskFileSystem::read(const std::string& name) {
    const FileHandle file(std::fopen(name.c_str(), "rb"));
    if (!file) {
        return std::nullopt;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);

    // The size is a guess only: a pipe has none, and a file may grow while it is read.
    constexpr std::size_t smallest = 4096;
    std::error_code error;
    const std::uintmax_t announced = fs::file_size(name, error);
    std::size_t capacity = smallest;
    if (!error) {
        checkFileSize(name, announced);
        capacity = static_cast<std::size_t>(announced) + 1;
    }
    FileContents contents = room(capacity);
    std::size_t size = 0;
    while (true) {
        const std::size_t got = std::fread(contents.data() + size, 1, capacity - size, file.get());
        size += got;
        if (size < capacity) {
            break;
        }
        checkFileSize(name, size);
        capacity = std::min(2 * capacity, largestFile + 1);
        FileContents larger(capacity);
        std::copy_n(contents.data(), size, larger.data());
        contents = std::move(larger);
    }
    if (std::ferror(file.get()) != 0) {
        return std::nullopt;
    }
    contents.shrink(size);
    return contents;
}

std::unique_ptr<OutputFile> DiskFileSystem::create(const std::string& name) {
    FileHandle file(std::fopen(name.c_str(), "wb"));
    if (!file) {
        return nullptr;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return std::make_unique<DiskOutputFile>(std::move(file));
}

bool DiskFileSystem::same(const std::string& one, const std::string& other) const {
    std::error_code error;
    const bool oneExists = fs::exists(one, error);
    const bool otherExists = fs::exists(other, error);
    if (oneExists && otherExists) {
        return fs::equivalent(one, other, error);
    }
    if (oneExists != otherExists) {
        return false;
    }
    const fs::path target = finalTarget(one);  // empty when its links run in a circle
    return !target.empty() && target == finalTarget(other);
}

}  // namespace mqf2vxb
