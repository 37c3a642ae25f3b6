#include "files/disk_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "base/diagnostics.h"

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

FileHandle openInput(const std::string& name) {
    FileHandle file(std::fopen(name.c_str(), "rb"));
    if (file) {
        std::setvbuf(file.get(), nullptr, _IONBF, 0);
    }
    return file;
}

/// The size of an ordinary file; nothing for a pipe, or when there is no such file. A device is
/// refused: it may never end, and to open it may do more than that.
std::optional<std::size_t> sizeOf(const std::string& name) {
    struct stat status {};
    if (stat(name.c_str(), &status) != 0) {
        return std::nullopt;
    }
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) {
        notCorrectData({name}, "the file is a device");
    }
    if (!S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    checkFileSize(name, static_cast<std::uintmax_t>(status.st_size));
    return static_cast<std::size_t>(status.st_size);
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

/// Small files follow each other through one buffer, whose pages are there already.
FileContents DiskInputFiles::room(std::size_t size) {
    constexpr std::size_t bufferSize = std::size_t{1} << 18U;
    if (size + FileContents::padding > bufferSize) {
        return FileContents(size);
    }
    if (buffer_.use_count() != 1) {
        buffer_ = std::make_shared_for_overwrite<char[]>(bufferSize);
    }
    return {buffer_, size};
}

std::optional<FileContents> DiskInputFiles::read(const std::string& name) {
    const std::optional<std::size_t> announced = sizeOf(name);
    const FileHandle file = openInput(name);
    return file ? readAll(*file, name, announced) : std::nullopt;
}

std::optional<FileStart> DiskInputFiles::readStart(const std::string& name, std::size_t most) {
    const std::optional<std::size_t> announced = sizeOf(name);
    const FileHandle file = openInput(name);
    if (!file) {
        return std::nullopt;
    }
    if (announced && most < *announced) {
        FileContents contents = room(most);
        const std::size_t size = std::fread(contents.data(), 1, most, file.get());
        if (std::ferror(file.get()) != 0) {
            return std::nullopt;
        }
        contents.shrink(size);
        return FileStart{std::move(contents), size == most ? *announced : size, true};
    }
    std::optional<FileContents> contents = readAll(*file, name, announced);
    if (!contents) {
        return std::nullopt;
    }
    const std::size_t size = contents->text().size();
    return FileStart{std::move(*contents), size, announced.has_value()};
}

std::optional<FileContents> DiskInputFiles::readAgain(const std::string& name, std::size_t size) {
    if (!sizeOf(name)) {  // a pipe by now, which nobody may ever write to
        return std::nullopt;
    }
    const FileHandle file = openInput(name);
    if (!file) {
        if (errno == EMFILE || errno == ENFILE) {
            notCorrectData({name}, "no more files can be opened");
        }
        return std::nullopt;
    }
    FileContents contents = room(size);
    if (std::fread(contents.data(), 1, size, file.get()) != size) {
        return std::nullopt;
    }
    contents.shrink(size);
    return contents;
}

std::optional<FileContents> DiskInputFiles::readAll(std::FILE& file, const std::string& name,
                                                    std::optional<std::size_t> announced) {
    // The size is a guess only: a pipe has none, and a file may grow while it is read.
    constexpr std::size_t smallest = 4096;
    std::size_t capacity = announced ? *announced + 1 : smallest;
    FileContents contents = room(capacity);
    std::size_t size = 0;
    while (true) {
        const std::size_t got = std::fread(contents.data() + size, 1, capacity - size, &file);
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
    if (std::ferror(&file) != 0) {
        return std::nullopt;
    }
    contents.shrink(size);
    return contents;
}

std::unique_ptr<OutputFile> DiskOutputFiles::create(const std::string& name) {
    FileHandle file(std::fopen(name.c_str(), "wb"));
    if (!file) {
        return nullptr;
    }
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return std::make_unique<DiskOutputFile>(std::move(file));
}

bool DiskOutputFiles::exists(const std::string& name) const {
    std::error_code error;
    return fs::exists(name, error);
}

bool DiskOutputFiles::same(const std::string& one, const std::string& other) const {
    const bool oneExists = exists(one);
    const bool otherExists = exists(other);
    if (oneExists && otherExists) {
        std::error_code error;
        return fs::equivalent(one, other, error);
    }
    if (oneExists != otherExists) {
        return false;
    }
    const fs::path target = finalTarget(one);  // empty when its links run in a circle
    return !target.empty() && target == finalTarget(other);
}

}  // namespace mqf2vxb
