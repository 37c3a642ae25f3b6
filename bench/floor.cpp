// The least that a conversion has to do, as the measure for its cost:
//
//     floor MODEL OUTPUT BYTES [OUTPUT BYTES]
//
// Reads every file of the model in one gulp, splits the text files into words, parses each number
// with std::from_chars, and writes as many bytes to each output as it is told. It keeps and
// organises nothing, checks nothing, and works on one file at a time.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

[[noreturn]] void fail(const char* what, const std::string& name) {
    std::fprintf(stderr, "floor: cannot %s %s\n", what, name.c_str());
    std::exit(1);
}

class Contents {
public:
    explicit Contents(const std::string& name) {
        const int file = open(name.c_str(), O_RDONLY);
        struct stat status {};
        if (file < 0 || fstat(file, &status) != 0) {
            fail("open", name);
        }
        const auto size = static_cast<std::size_t>(status.st_size);
        bytes_ = std::make_unique_for_overwrite<char[]>(size);
        while (size_ < size) {
            const ssize_t got = read(file, bytes_.get() + size_, size - size_);
            if (got <= 0) {
                fail("read", name);
            }
            size_ += static_cast<std::size_t>(got);
        }
        close(file);
    }
    [[nodiscard]] std::string_view text() const { return {bytes_.get(), size_}; }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_ = 0;
};

/// What was parsed, so that the compiler cannot leave the parsing out.
struct Numbers {
    std::uint64_t integers = 0;
    float reals = 0;
};

/// Parses the numbers of a word; a word such as "3-8" or "1,2" has several.
void parseWord(const char* word, const char* end, bool real, Numbers& numbers) {
    if (real) {
        float value = 0;
        std::from_chars(word, end, value);
        numbers.reals += value;
        return;
    }
    while (word != end) {
        std::int32_t value = 0;
        const char* const next = std::from_chars(word, end, value).ptr;
        numbers.integers += static_cast<std::uint32_t>(value);
        word = next == word ? word + 1 : next;
    }
}

void parseText(std::string_view text, Numbers& numbers) {
    const char* p = text.data();
    const char* const end = p + text.size();
    while (true) {
        while (p != end && *p <= ' ') {
            ++p;
        }
        if (p == end) {
            return;
        }
        const char* const word = p;
        bool real = false;
        while (p != end && *p > ' ') {
            real |= *p == '.';
            ++p;
        }
        if (*word <= '9') {
            parseWord(word, p, real, numbers);
        }
    }
}

/// The files that the lines "KEY=NAME" of a model description name.
std::vector<std::string> namesIn(std::string_view description) {
    std::vector<std::string> names;
    while (!description.empty()) {
        const std::size_t end = description.find('\n');
        const std::string_view line = description.substr(0, end);
        const std::size_t equals = line.find('=');
        if (equals != std::string_view::npos && !line.starts_with("NTEX") &&
            !line.starts_with("NCLP") && !line.starts_with("SQD")) {
            names.emplace_back(line.substr(equals + 1));
        }
        description.remove_prefix(end == std::string_view::npos ? description.size() : end + 1);
    }
    return names;
}

void readAll(const std::string& model, Numbers& numbers) {
    const Contents description(model);
    parseText(description.text(), numbers);
    for (const std::string& name : namesIn(description.text())) {
        const Contents contents(name);
        if (contents.text().starts_with('@')) {  // images are words of 32 bits already
            parseText(contents.text(), numbers);
        }
    }
}

void writeOutput(const std::string& name, std::size_t size) {
    constexpr std::size_t blockSize = std::size_t{1} << 18U;
    const std::unique_ptr<char[]> block = std::make_unique_for_overwrite<char[]>(blockSize);
    std::memset(block.get(), 'x', blockSize < size ? blockSize : size);
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (file < 0) {
        fail("create", name);
    }
    while (size > 0) {
        const ssize_t put = write(file, block.get(), blockSize < size ? blockSize : size);
        if (put <= 0) {
            fail("write", name);
        }
        size -= static_cast<std::size_t>(put);
    }
    if (close(file) != 0) {
        fail("write", name);
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount < 4 || argumentCount % 2 != 0) {
        std::fprintf(stderr, "usage: floor MODEL OUTPUT BYTES [OUTPUT BYTES]\n");
        return 2;
    }
    Numbers numbers;
    readAll(arguments[1], numbers);
    for (int i = 2; i < argumentCount; i += 2) {
        writeOutput(arguments[i], std::strtoull(arguments[i + 1], nullptr, 10));
    }
    std::printf("%llu %g\n", static_cast<unsigned long long>(numbers.integers),
                static_cast<double>(numbers.reals));
    return 0;
}
