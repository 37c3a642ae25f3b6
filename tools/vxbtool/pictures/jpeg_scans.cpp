#include "vxbtool/pictures/jpeg_scans.h"

#include <cstddef>
#include <cstdint>
#include <set>

#include <fmt/core.h>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {
namespace {

/// The segments of a JPEG file that tell of its components.
class Scans {
public:
    explicit Scans(std::string_view bytes) : bytes_(bytes) { read(); }

    [[nodiscard]] int number() const { return number_; }
    /// Whether each component has a scan with its lowest frequency.
    [[nodiscard]] bool areComplete() const { return number_ > 0 && missing_.empty(); }

private:
    static constexpr std::uint8_t mark = 0xFF;

    [[nodiscard]] std::uint8_t at(std::size_t place) const {
        return place < bytes_.size() ? static_cast<std::uint8_t>(bytes_[place]) : std::uint8_t{0};
    }

    void read() {
        constexpr std::uint8_t end = 0xD9;
        constexpr std::uint8_t scan = 0xDA;
        constexpr std::size_t header = 2;  // a mark and its kind
        std::size_t place = header;
        while ((place = bytes_.find(static_cast<char>(mark), place)) != std::string_view::npos) {
            const std::uint8_t kind = at(place + 1);
            if (kind == mark) {
                ++place;
                continue;
            }
            place += header;
            if (kind == end) {
                return;
            }
            if (standsAlone(kind)) {
                continue;
            }
            if (isFrame(kind)) {
                readFrame(place);
            } else if (kind == scan) {
                readScan(place);
            }
            constexpr unsigned byte = 8;
            place += (std::size_t{at(place)} << byte) + at(place + 1);
        }
    }

    /// A byte of the picture's data, or a mark without a segment.
    static bool standsAlone(std::uint8_t kind) {
        constexpr std::uint8_t firstRestart = 0xD0;
        constexpr std::uint8_t start = 0xD8;
        return kind <= 1 || (kind >= firstRestart && kind <= start);
    }
    static bool isFrame(std::uint8_t kind) {
        constexpr std::uint8_t baseline = 0xC0;
        constexpr std::uint8_t progressive = 0xC2;
        return kind >= baseline && kind <= progressive;
    }

    void readFrame(std::size_t place) {
        constexpr std::size_t count = 7;
        constexpr std::size_t entry = 3;
        for (std::size_t i = 0; i < at(place + count); ++i) {
            missing_.insert(at(place + count + 1 + entry * i));
        }
    }

    void readScan(std::size_t place) {
        ++number_;
        constexpr std::size_t count = 2;
        constexpr std::size_t entry = 2;
        const std::size_t components = at(place + count);
        const bool lowest = at(place + count + 1 + entry * components) == 0;
        for (std::size_t i = 0; lowest && i < components; ++i) {
            missing_.erase(at(place + count + 1 + entry * i));
        }
    }

    std::string_view bytes_;
    int number_ = 0;
    std::set<std::uint8_t> missing_;  // components without such a scan
};

}  // namespace

void requireSoundScans(std::string_view bytes) {
    constexpr std::string_view jpegStart = "\xFF\xD8";
    constexpr int most = 64;
    if (!bytes.starts_with(jpegStart)) {
        return;
    }
    const Scans scans(bytes);
    if (!scans.areComplete()) {
        throw PictureFault("the picture lacks a scan of a colour");
    }
    if (scans.number() > most) {
        throw PictureFault(fmt::format("the picture has more than {} scans", most));
    }
}

}  // namespace vxbtool::pictures
