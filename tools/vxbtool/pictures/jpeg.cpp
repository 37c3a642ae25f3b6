#include "vxbtool/pictures/jpeg.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cctype>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string>

#include <fmt/core.h>
// What it declares needs <cstdio> before it.
#include <jpeglib.h>
//
#include <jerror.h>

#include "vxbtool/pictures/picture_size.h"

namespace vxbtool::pictures {
namespace {

/// Texels for a byte: of two components, each sampled fully in one direction and four times less in
/// the other, eight blocks of a bit make 32 x 32 texels.
constexpr std::size_t closestHuffmanTexels = 1024;

/// A JPEG file on its way through the library, which leaves at a fault by longjmp: what lies between
/// runs() and the library holds nothing that has to be destroyed.
class JpegReader {
public:
    explicit JpegReader(std::string_view bytes) : bytes_(bytes) {
        info_.err = jpeg_std_error(&errors_);
        errors_.error_exit = &JpegReader::leave;
        errors_.emit_message = &JpegReader::hear;
        info_.client_data = this;
        run([](JpegReader& reader) { jpeg_create_decompress(&reader.info_); });
    }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;
    ~JpegReader() { jpeg_destroy_decompress(&info_); }

    Picture read() {
        run([](JpegReader& reader) { reader.readHeader(); });
        requireSoundSize(info_.image_width, info_.image_height, bytes_.size(),
                         info_.arith_code != FALSE ? closestTexels : closestHuffmanTexels);
        Picture picture{info_.image_width, info_.image_height, {}};
        picture.texels.resize(std::size_t{picture.width} * picture.height);
        texels_ = picture.texels.data();
        run([](JpegReader& reader) { reader.readScans(); });
        if (!missing_.none()) {
            throw PictureFault("the picture lacks a scan of a colour");
        }
        run([](JpegReader& reader) { reader.readTexels(); });
        return picture;
    }

private:
    static JpegReader& readerOf(j_common_ptr info) {
        return *static_cast<JpegReader*>(info->client_data);
    }
    [[noreturn]] static void leave(j_common_ptr info) {
        // NOLINTNEXTLINE(cert-err52-cpp): the library's functions cannot be left otherwise.
        std::longjmp(readerOf(info).back_, 1);
    }
    /// Of the library's warnings, those that tell of data that is not there end the reading.
    static void hear(j_common_ptr info, int level) {
        static constexpr std::array<int, 5> faults{JWRN_JPEG_EOF, JWRN_HIT_MARKER,
                                                   JWRN_HUFF_BAD_CODE, JWRN_ARITH_BAD_CODE,
                                                   JWRN_MUST_RESYNC};
        if (level < 0 && std::ranges::find(faults, info->err->msg_code) != faults.end()) {
            leave(info);
        }
    }

    /// Runs a step, and throws what the library says when it leaves it.
    template <class Step>
    void run(Step step) {
        // NOLINTNEXTLINE(cert-err52-cpp): as above.
        if (setjmp(back_) == 0) {
            step(*this);
            return;
        }
        fail();
    }

    [[noreturn]] void fail() {
        if (tooMany_) {
            throw PictureFault(fmt::format("the picture has more than {} scans", mostScans));
        }
        if (errors_.msg_code == JWRN_JPEG_EOF) {
            throw PictureFault("the picture ends early");
        }
        std::array<char, JMSG_LENGTH_MAX> text{};
        errors_.format_message(reinterpret_cast<j_common_ptr>(&info_), text.data());
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
        throw PictureFault(fmt::format("no picture can be read from it: {}", text.data()));
    }

    void readHeader() {
        jpeg_mem_src(&info_, reinterpret_cast<const unsigned char*>(bytes_.data()), bytes_.size());
        jpeg_read_header(&info_, TRUE);
    }

    /// Reads all scans of a file that has several. One that has a single scan is read with its texels.
    void readScans() {
        const bool four = info_.jpeg_color_space == JCS_CMYK || info_.jpeg_color_space == JCS_YCCK;
        info_.out_color_space = four ? JCS_CMYK : JCS_EXT_RGBA;
        info_.buffered_image = jpeg_has_multiple_scans(&info_);
        jpeg_start_decompress(&info_);
        for (int i = 0; i < info_.num_components; ++i) {
            missing_.set(static_cast<std::size_t>(info_.comp_info[i].component_index));
        }
        noteScan();
        if (info_.buffered_image == FALSE) {
            return;
        }
        int result = JPEG_SUSPENDED;
        while ((result = jpeg_consume_input(&info_)) != JPEG_REACHED_EOI) {
            if (result == JPEG_REACHED_SOS) {
                noteScan();
            }
        }
        jpeg_start_output(&info_, info_.input_scan_number);
    }

    /// Which components have their lowest frequency in the scan that begins.
    void noteScan() {
        if (info_.input_scan_number > mostScans) {
            tooMany_ = true;
            leave(reinterpret_cast<j_common_ptr>(&info_));
        }
        for (int i = 0; info_.Ss == 0 && i < info_.comps_in_scan; ++i) {
            missing_.reset(static_cast<std::size_t>(info_.cur_comp_info[i]->component_index));
        }
    }

    void readTexels() {
        for (std::uint32_t y = 0; y < info_.output_height; ++y) {
            Rgba* const line = texels_ + std::size_t{y} * info_.output_width;
            auto* samples = reinterpret_cast<JSAMPROW>(line);
            jpeg_read_scanlines(&info_, &samples, 1);
            if (info_.out_color_space == JCS_CMYK) {
                std::transform(line, line + info_.output_width, line, ofInks);
            }
        }
        if (info_.buffered_image != FALSE) {
            jpeg_finish_output(&info_);
        }
        jpeg_finish_decompress(&info_);
    }

    /// Programs that print write how much of each ink is not there.
    static Rgba ofInks(const Rgba& inks) {
        constexpr unsigned full = 255;
        const auto of = [&](std::uint8_t ink) {
            return static_cast<std::uint8_t>((unsigned{ink} * inks[3] + full / 2) / full);
        };
        return {of(inks[0]), of(inks[1]), of(inks[2]), std::uint8_t{full}};
    }

    static constexpr int mostScans = 64;

    std::string_view bytes_;
    jpeg_decompress_struct info_{};
    jpeg_error_mgr errors_{};
    std::jmp_buf back_{};
    bool tooMany_ = false;
    std::bitset<MAX_COMPONENTS> missing_;  // components without a scan of their lowest frequency
    Rgba* texels_ = nullptr;
};

}  // namespace

bool isJpeg(std::string_view bytes) { return bytes.starts_with("\xFF\xD8"); }

Picture readJpeg(std::string_view bytes) { return JpegReader(bytes).read(); }

}  // namespace vxbtool::pictures
