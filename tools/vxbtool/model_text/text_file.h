#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "files/output_files.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::model_text {

/// One file of a model on its way out, in large blocks.
class TextFile {
public:
    /// Throws mqf2vxb::Report of a file that cannot be created; so do put() and close() of one that
    /// cannot be written.
    TextFile(mqf2vxb::OutputFiles& files, std::string name);

    void put(std::string_view text) {
        buffer_.append(text);
        if (buffer_.size() >= largeBlock) {
            flush();
        }
    }
    void number(std::int64_t value);
    /// The shortest decimal that is read as this float.
    void real(float value);
    void word(std::uint32_t value);  ///< four bytes
    /// Lines that begin with "# ", short enough for every reader; nothing for an empty text.
    void comment(std::string_view text);
    void close();

private:
    static constexpr std::size_t largeBlock = std::size_t{1} << 16U;
    void flush();

    std::string name_;
    std::unique_ptr<mqf2vxb::OutputFile> file_;
    std::string buffer_;
};

/// Writes the comments of one list as its entries go by.
class NoteWriter {
public:
    NoteWriter(const Notes& notes, TextFile& file) : notes_(notes), file_(file) {}

    /// Index of the next entry that has a comment above it.
    [[nodiscard]] std::size_t next() const {
        return next_ < notes_.size() ? notes_[next_].before : SIZE_MAX;
    }
    /// Writes what stands above the entry, and above those that were passed over.
    void before(std::size_t entry) {
        for (; next() <= entry; ++next_) {
            file_.comment(notes_[next_].text);
        }
    }

private:
    const Notes& notes_;
    TextFile& file_;
    std::size_t next_ = 0;
};

}  // namespace vxbtool::model_text
