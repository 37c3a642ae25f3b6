#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "files/input_files.h"
#include "files/inputs.h"
#include "files/output_files.h"
#include "model/options.h"

namespace mqf2vxb::tests {

/// Contents of files by their names.
using Files = std::map<std::string, std::string>;
using Words = std::vector<std::uint32_t>;

/// Files that exist in memory only.
class MemoryFileSystem final : public InputFiles, public OutputFiles {
public:
    explicit MemoryFileSystem(Files files) : inputs(std::move(files)) {}

    [[nodiscard]] std::optional<FileContents> read(const std::string& name) override;
    [[nodiscard]] std::optional<FileContents> readAgain(const std::string& name,
                                                        std::size_t size) override;
    [[nodiscard]] std::unique_ptr<OutputFile> create(const std::string& name) override;
    [[nodiscard]] bool exists(const std::string& name) const override {
        return inputs.contains(name);
    }

    Files inputs;
    Files later;                      ///< what inputs are when they are read again
    Files outputs;                    ///< every file created, with what was written
    std::vector<std::string> opened;  ///< inputs in the order in which they were read
    std::string locked;               ///< the one file that cannot be created
    /// Bytes that can still be written; what does not fit is lost.
    std::size_t room = std::numeric_limits<std::size_t>::max();
};

/// What a conversion did.
struct Conversion {
    std::string report;  ///< the report's text; empty after a success
    std::string place;   ///< the report's "file:line", where it knows them
    Files outputs;
    std::vector<std::string> opened;

    [[nodiscard]] Words words() const;  ///< of the one VXB file
    [[nodiscard]] std::string hex() const { return outputs.at("hex"); }
};

/// Converts the model "m.mqf".
Conversion convertFiles(MemoryFileSystem& files, const RunOptions& options = {});
Conversion convertFiles(const Files& files, const RunOptions& options = {});
/// Options that ask for the hex text too, under the name "hex".
RunOptions withHex();

/// A model in a few lines: the text behind the ID line of each component, where ";" ends a line.
/// A component that is empty is not named by the MQF file.
struct ModelFiles {
    std::string geo, srf, axs, frm, bnd;
    std::string sqx;                  ///< "g.sqx", which the FRM file has to name
    std::vector<std::string> clp;     ///< "0.clp", "1.clp", ...
    std::vector<std::string> images;  ///< bytes of "0.pxl", "1.pxl", ...

    [[nodiscard]] Files files() const;
};
/// A small model with a hierarchy, shared polygons, a strip, pivots, images and motions.
ModelFiles smallModel();
inline Conversion convertFiles(const ModelFiles& model, const RunOptions& options = {}) {
    return convertFiles(model.files(), options);
}

/// The text with a line feed in place of each ";".
std::string lines(std::string_view text);

std::string bytesOf(const Words& words);
Words wordsOf(std::string_view bytes);

/// An image file of these blocks, each without its length word. A CLUT block is written when there
/// is one, whatever `flag` says of it.
std::string image(std::uint32_t flag, const Words& pixel, const Words& clut = {});

/// The words as text, one "offset: word" a line, so that a difference shows its offset.
std::string show(const Words& words);
/// The words from the one whose hex-text comment is `comment` up to the one with `end`, or up to
/// the end of the file.
Words between(const std::string& hex, std::string_view comment, std::string_view end = {});

/// `count` lines of the same text.
std::string repeated(std::size_t count, std::string_view line);

/// A report about input that cannot become a right file, as the program prints it.
std::string notCorrect(const std::string& file, int line, const std::string& cause);

}  // namespace mqf2vxb::tests
