#include <cstdint>
#include <map>
#include <string_view>
#include <tuple>

#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

constexpr std::uint32_t mode16Bit = 2;

unsigned bitsOf(const ImageRecord& image) { return 4U << image.mode; }

class ImageCheck {
public:
    ImageCheck(const LintedModel& linted, Findings& findings)
        : linted_(linted), images_(linted.model.images), findings_(findings) {}

    void check() {
        bool sharedTable = false;
        for (const ImageRecord& image : images_) {
            sharedTable = sharedTable || (image.hasClut() && image.clut.header[0] == 0);
        }
        std::map<std::tuple<std::uint32_t, std::uint32_t>, std::size_t> first;
        for (std::size_t i = 0; i < images_.size(); ++i) {
            const ImageRecord& image = images_[i];
            checkBlock(i, "picture", image.pixel);
            if (image.hasClut()) {
                checkBlock(i, "colour table", image.clut);
                checkTable(i);
            } else if (image.mode != mode16Bit && !sharedTable) {
                add(kind::tableMissing, i, fmt::arg("bits", bitsOf(image)));
            }
            checkEnd(i);
            const auto [known, isNew] =
                first.try_emplace({image.pixel.header[0], image.pixel.header[1]}, i);
            if (!isNew && images_[known->second].mode != image.mode) {
                add(kind::twoDepths, i, fmt::arg("other", known->second));
            }
        }
    }

private:
    template <class... Values>
    void add(const FindingKind& kind, std::size_t image, const Values&... values) {
        findings_.add(kind, linted_.source.image(image), values..., fmt::arg("image", image));
    }

    void checkBlock(std::size_t image, std::string_view part, const PxlBlock& block) {
        constexpr std::uint32_t memory = 1024;  // columns and lines that packets can tell
        const std::uint32_t width = block.header[1] & 0xFFFFU;
        const std::uint32_t height = block.header[1] >> 16U;
        const std::uint64_t words = (std::uint64_t{width} * height + 1) / 2;
        if (words != block.dataWords) {
            add(kind::sizeDisagrees, image, fmt::arg("part", part), fmt::arg("width", width),
                fmt::arg("height", height), fmt::arg("words", words),
                fmt::arg("data", block.dataWords));
        }
        const auto [x, y] = block.position();
        if (x + width > memory || y + height > memory) {
            add(kind::outsideMemory, image, fmt::arg("part", part), fmt::arg("right", x + width),
                fmt::arg("bottom", y + height));
        }
    }

    void checkTable(std::size_t number) {
        const ImageRecord& image = images_[number];
        if (image.mode == mode16Bit) {
            // The one at 0, 0 is for images without a table of their own.
            return image.clut.header[0] == 0 ? void() : add(kind::tableUnused, number);
        }
        constexpr std::uint32_t step = 16;
        const std::uint32_t column = image.clut.position().x;
        if (column % step != 0) {
            add(kind::tableColumn, number, fmt::arg("x", column));
        }
        const std::size_t needed = std::size_t{1} << bitsOf(image);
        const std::size_t colours = 2 * image.clut.dataWords;
        if (colours != needed) {
            add(kind::tableSize, number, fmt::arg("colours", colours),
                fmt::arg("bits", bitsOf(image)), fmt::arg("needed", needed));
        }
    }

    void checkEnd(std::size_t number) {
        const ImageRecord& image = images_[number];
        const std::size_t size = image.file->text().size();
        const std::size_t end = image.pixel.dataStart + 4 * image.pixel.dataWords;
        if (size > end) {
            add(kind::bytesLeft, number, fmt::arg("bytes", size - end));
        }
    }

    const LintedModel& linted_;
    const Table<ImageRecord>& images_;
    Findings& findings_;
};

}  // namespace

void checkImages(const LintedModel& linted, Findings& findings) {
    ImageCheck(linted, findings).check();
}

}  // namespace vxbtool::lint
