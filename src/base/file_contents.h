#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

namespace mqf2vxb {

/// A place in a file's text from which a scan may go on without looking for the text's end: `padding`
/// NUL characters follow it. A scan that stops at a NUL stops there, and one that looks ahead no
/// further than that stays inside the buffer.
class PaddedPlace {
public:
    static constexpr std::size_t padding = 8;

    PaddedPlace() = default;  ///< no place
    /// Null for no place.
    [[nodiscard]] const char* get() const { return at_; }

private:
    friend class FileContents;
    explicit PaddedPlace(const char* at) : at_(at) {}

    const char* at_ = nullptr;
};

/// The bytes of one file, read in one gulp. Views into it stay good when it is moved or copied.
class FileContents {
public:
    static constexpr std::size_t padding = PaddedPlace::padding;

    FileContents() = default;
    /// Room for `size` bytes, to be filled through data().
    explicit FileContents(std::size_t size)
        : FileContents(std::make_shared_for_overwrite<char[]>(size + padding), size) {}
    /// The same in memory that others share; `padding` more bytes are there.
    FileContents(std::shared_ptr<char[]> bytes, std::size_t size) : bytes_(std::move(bytes)) {
        shrink(size);
    }

    [[nodiscard]] char* data() { return bytes_.get(); }
    [[nodiscard]] std::string_view text() const {
        static constexpr std::array<char, padding> nothing{};
        return {bytes_ ? bytes_.get() : nothing.data(), size_};
    }
    /// The place `offset` characters from the start of the text, up to its end.
    [[nodiscard]] PaddedPlace place(std::size_t offset) const {
        return PaddedPlace(text().data() + offset);
    }
    /// Keeps the first `size` bytes.
    void shrink(std::size_t size) {
        size_ = size;
        std::fill_n(bytes_.get() + size, padding, '\0');
    }

private:
    std::shared_ptr<char[]> bytes_;
    std::size_t size_ = 0;
};

}  // namespace mqf2vxb
