#include "vxb/word_meaning.h"

#include <algorithm>
#include <array>

#include "format/format.h"
#include "format/texture_fields.h"
#include "vxb/key_frame_decoder.h"
#include "vxb/packet_decoder.h"
#include "vxb/reading.h"
#include "vxb/word_names.h"

namespace mqf2vxb {
namespace {

using format::bit31;

std::string number(std::uint32_t value) { return std::to_string(value); }

std::string pair(std::uint32_t a, std::uint32_t b) {
    return "(" + number(a) + ", " + number(b) + ")";
}

std::string signedHalves(std::uint32_t word) {
    return std::to_string(static_cast<std::int16_t>(word)) + ", " +
           std::to_string(static_cast<std::int16_t>(word >> 16U));
}

std::string hexadecimal(std::uint32_t value) {
    std::string text;
    do {
        text.insert(text.begin(), "0123456789abcdef"[value & 15U]);
        value >>= 4U;
    } while (value != 0);
    return "0x" + text;
}

/// A number in bits 16 to 30 and a size in the low half.
std::string numberAndSize(std::uint32_t word, std::string_view things) {
    return number(word >> 16U & format::largestNumber) + " " + std::string(things) + ", size " +
           number(word & format::largestSize);
}

std::string partName(Part part) {
    switch (part) {
    case Part::fileHeader: return "file header";
    case Part::blockTable: return "block table";
    case Part::coordinateNumber: return "coordinate section";
    case Part::coordinate: return "coordinate";
    case Part::globalHeaderNumber: return "global headers";
    case Part::globalHeader: return "global header";
    case Part::primitiveHeader: return "primitive header";
    case Part::packetGroup: return "packet group";
    case Part::independentVertices: return "independent vertices";
    case Part::sharedVertices: return "shared vertices";
    case Part::calculatedVertices: return "calculated vertices";
    case Part::independentNormals: return "independent normals";
    case Part::sharedNormals: return "shared normals";
    case Part::calculatedNormals: return "calculated normals";
    case Part::animationHeader: return "animation";
    case Part::motion: return "motion";
    case Part::animatedCoordinate: return "animated coordinate";
    case Part::keyFrameTypes: return "types of key frames";
    case Part::controlWords: return "control words";
    case Part::keyFrames: return "key frames";
    case Part::imageHeader: return "images";
    case Part::imageType: return "type of images";
    case Part::imageEntry: return "image";
    case Part::pixels: return "pixels";
    case Part::cluts: return "lookup tables";
    case Part::unknown: break;
    }
    return "words of no section";
}

/// Whether a file has several regions of a part, which are told apart by their index.
bool isNumbered(Part part) {
    constexpr std::array numbered{Part::coordinate, Part::primitiveHeader,    Part::packetGroup,
                                  Part::motion,     Part::animatedCoordinate, Part::imageEntry};
    return std::find(numbered.begin(), numbered.end(), part) != numbered.end();
}

}  // namespace

std::string regionName(const Region& region) {
    const std::string name = partName(region.part);
    if (region.part == Part::globalHeader) {
        return std::string(globalHeaderName(static_cast<GlobalHeaderKind>(region.index))) + " " +
               name;
    }
    return isNumbered(region.part) ? name + " " + number(region.index) : name;
}

std::string_view globalHeaderName(GlobalHeaderKind kind) {
    constexpr std::array<std::string_view, globalHeaderNum> names{"independent", "shared",
                                                                  "animation", "image"};
    return names[static_cast<std::size_t>(kind)];
}

std::string formName(PrimitiveTypeCode type) {
    const PacketForm* form = findPacketForm(type & ~type_code::first);
    if (form == nullptr) {
        return "unknown type";
    }
    std::string text((type & type_code::shared) != 0 ? "shared " : "");
    text += packetFamily(form->family).name;
    text += (form->code & type_code::smooth) != 0 ? " smooth " : " flat ";
    text += form->textured ? "textured " : "";
    switch (form->shape) {
    case PacketShape::triangle: text += "triangles"; break;
    case PacketShape::quadrangle: text += "quadrangles"; break;
    case PacketShape::strip: text += "strips"; break;
    }
    return text + ((form->code & type_code::colourPerCorner) != 0 ? " with corner colours" : "");
}

namespace {

std::string fieldText(Field field, std::uint32_t value) {
    switch (field) {
    case Field::zero: return "";
    case Field::V0:
    case Field::V1:
    case Field::V2:
    case Field::V3: return "vertex " + number(value);
    case Field::N0:
    case Field::N1:
    case Field::N2:
    case Field::N3: return "normal " + number(value);
    case Field::T0:
    case Field::T1:
    case Field::T2:
    case Field::T3: return "texel " + pair(value & 0xFFU, value >> 8U);
    case Field::clut: {
        const ClutPosition clut = clutPosition(value);
        return "lookup table at " + pair(clut.x, clut.y);
    }
    case Field::page: {
        const TexturePage page = texturePage(value);
        return "page at " + pair(page.x, page.y) + ", " + number(page.depth()) +
               " bits, flag bits " + number(page.flagBits);
    }
    case Field::window: {
        const TextureWindow window = textureWindow(value);
        return "window of " + number(window.width) + " x " + number(window.height) + " at " +
               pair(window.x, window.y);
    }
    default:
        return "colour " + number(value & 0xFFU) + ", " + number(value >> 8U & 0xFFU) + ", " +
               number(value >> 16U & 0xFFU) + ", drawing code " + hexadecimal(value >> 24U);
    }
}

/// Two texts with a separator; empty ones are left out.
std::string join(const std::string& a, const std::string& b, std::string_view separator) {
    return a.empty() || b.empty() ? a + b : a + std::string(separator) + b;
}

/// Describes the words of one region. Each function gives the words of one part in their order;
/// words that are left over at the region's end, which only a damaged file has, have no name.
class Describer {
public:
    Describer(const VxbFile& file, const Region& region, const WordVisitor& visit)
        : file_(file), region_(region), visit_(visit), next_(region.offset) {}

    void describe() {
        describePart();
        while (next_ < region_.end()) {
            word("", region_.part == Part::unknown ? "" : "not decoded");
        }
    }

private:
    [[nodiscard]] std::uint32_t value() const {
        return next_ < region_.end() ? file_.words[next_] : 0;
    }

    void word(std::string_view name, const std::string& meaning) {
        if (next_ < region_.end()) {
            visit_({next_, file_.words[next_], std::string(name), meaning});
            ++next_;
        }
    }

    void count(std::string_view name) { word(name, number(value() & ~bit31)); }

    /// An offset word, bit 31 or not.
    void offset(std::string_view name) {
        const std::uint32_t target = value() & ~bit31;
        if (value() == format::endOfChain) {
            word(name, "end of the chain");
        } else {
            word(name, value() == 0 ? "absent" : placeName(file_, target));
        }
    }

    void describePart() {
        switch (region_.part) {
        case Part::fileHeader: return fileHeader();
        case Part::blockTable: return blockTable();
        case Part::coordinateNumber: return count(word_name::coordinateNumber);
        case Part::coordinate: return coordinate();
        case Part::globalHeaderNumber: return count(word_name::primitiveGlobalHeaderNumber);
        case Part::globalHeader: return globalHeader();
        case Part::primitiveHeader: return primitiveHeader();
        case Part::packetGroup: return packets();
        case Part::independentVertices: return points("vertex", false);
        case Part::sharedVertices: return points("shared vertex", false);
        case Part::calculatedVertices: return zeros("calculated vertex");
        case Part::independentNormals: return points("normal", true);
        case Part::sharedNormals: return points("shared normal", true);
        case Part::calculatedNormals: return zeros("calculated normal");
        case Part::animationHeader:
            offset(word_name::nextPrimitivePointer);
            offset(word_name::animationPrimitiveGlobalHeaderPointer);
            return count(word_name::animationTypeNumber);
        case Part::motion:
            word(word_name::animationType, "motion " + number(region_.index));
            return word(word_name::indexNumberSize, numberAndSize(value(), "animated coordinates"));
        case Part::animatedCoordinate: return animatedCoordinate();
        case Part::keyFrameTypes: return keyFrameTypes();
        case Part::controlWords: return controlWords();
        case Part::keyFrames: return keyFrames();
        case Part::imageHeader:
            offset(word_name::nextPrimitivePointer);
            offset(word_name::imagePrimitiveGlobalHeaderPointer);
            return count(word_name::typeNumber);
        case Part::imageType:
            word(word_name::type,
                 (value() & 1U) != 0 ? "images with lookup table" : "images without");
            return word(word_name::imageNumberSize, numberAndSize(value(), "images"));
        case Part::imageEntry: return imageEntry();
        case Part::pixels: return imageData(false);
        case Part::cluts: return imageData(true);
        case Part::unknown: return;
        }
    }

    void fileHeader() {
        word("ID", "");
        word("Flag", "");
        offset(word_name::primitiveGlobalHeaderTop);
        count(word_name::blockNumber);
    }

    void blockTable() {
        offset(word_name::prePrimitiveTop);
        for (std::size_t c = 0; c < file_.coordinates.size(); ++c) {
            offset("Coordinate" + std::to_string(c) + " Primitive Top");
        }
        offset(word_name::postPrimitiveTop);
    }

    void coordinate() {
        word(word_name::coordinateTop, "coordinate " + number(region_.index));
        for (const std::string_view name : {"m00, m01", "m02, m10", "m11, m12", "m20, m21"}) {
            word(name, signedHalves(value()));
        }
        word("m22", std::to_string(static_cast<std::int16_t>(value())));
        for (const std::string_view name : {"translation x", "translation y", "translation z"}) {
            word(name, std::to_string(static_cast<std::int32_t>(value())));
        }
        constexpr std::uint32_t reserved = 8;
        for (std::uint32_t i = 0; i < reserved; ++i) {
            word("reserved", "");
        }
        word("extra 0, 1", signedHalves(value()));
        word("extra 2", std::to_string(static_cast<std::int16_t>(value())));
        word("parent", value() == 0 ? "none" : placeName(file_, value()));
    }

    void globalHeader() {
        const auto kind = static_cast<GlobalHeaderKind>(region_.index);
        for (std::uint32_t i = 0; i < region_.words; ++i) {
            const std::string_view name = reading::globalHeaderWord(kind, i);
            if (name.ends_with("Size")) {
                count(name);
            } else {
                offset(name);
            }
        }
    }

    void primitiveHeader() {
        const PrimitiveHeader& header = file_.primitiveHeaders[region_.index];
        const bool independent = header.kind == PrimitiveHeaderKind::independent;
        offset(word_name::nextPrimitivePointer);
        offset(independent ? word_name::independentPrimitiveGlobalHeaderPointer
                           : word_name::sharedPrimitiveGlobalHeaderPointer);
        count(word_name::typeNumber);
        if (header.kind == PrimitiveHeaderKind::sharedVertices) {
            word(word_name::type, "shared vertices" + firstMark(value()));
            word(word_name::polygonNumberSize, numberAndSize(value(), "polygons"));
            for (const std::string_view name :
                 {word_name::sharedVertexNumber, word_name::sharedVertexSource,
                  word_name::sharedVertexDestination, word_name::sharedNormalNumber,
                  word_name::sharedNormalSource, word_name::sharedNormalDestination}) {
                word(name, number(value()));
            }
            return;
        }
        for (std::uint32_t i = 0; i < header.descriptionNum; ++i) {
            const TypeDescription& description = file_.descriptions[header.firstDescription + i];
            const bool strips = type_code::isStrip(description.type);
            word(word_name::type, formName(value()) + firstMark(value()));
            word(word_name::polygonNumberSize,
                 numberAndSize(value(), strips ? "strips" : "polygons"));
            word(word_name::primitiveIndex, description.group
                                                ? "packet group " + number(*description.group)
                                                : "no packet group");
        }
    }

    static std::string firstMark(std::uint32_t type) {
        return (type & type_code::first) != 0 ? ", first of the first coordinate with objects" : "";
    }

    void packets() {
        forEachPolygon(file_, file_.packetGroups[region_.index], [&](const PacketPolygon& polygon) {
            const PacketForm& form = *polygon.form;
            if (form.strip() && polygon.place == 0) {
                word("polygons of a strip", number(value()));
            }
            packetWords(form.opening);
            packetWords(polygon.place > 0 ? form.further : form.packet);
        });
    }

    void packetWords(const PacketWords& words) {
        for (const PacketWord fields : words) {
            if (isWholeWord(fields.low)) {
                word(fieldName(fields.low), fieldText(fields.low, value()));
            } else {
                word(join(std::string(fieldName(fields.low)), std::string(fieldName(fields.high)),
                          ", "),
                     join(fieldText(fields.low, value() & 0xFFFFU),
                          fieldText(fields.high, value() >> 16U), ", "));
            }
        }
    }

    void points(const std::string& name, bool normals) {
        std::uint32_t index = 0;
        const auto text = [&](std::uint32_t half) {
            const auto component = static_cast<std::int16_t>(half);
            return normals ? std::to_string(static_cast<float>(component) / format::normalScale)
                           : std::to_string(component);
        };
        while (next_ < region_.end()) {
            word(name + " " + number(index) + " x, y",
                 text(value() & 0xFFFFU) + ", " + text(value() >> 16U));
            word(name + " " + number(index) + " z", text(value() & 0xFFFFU));
            ++index;
        }
    }

    void zeros(const std::string& name) {
        while (next_ < region_.end()) {
            word(name + " " +
                     number((next_ - region_.offset) /
                            static_cast<std::uint32_t>(format::pointSize)),
                 "");
        }
    }

    void animatedCoordinate() {
        const AnimatedCoordinate& animated = file_.animation.coordinates[region_.index];
        word(word_name::coordinateOffset, "coordinate " + number(animated.coordinate));
        word(word_name::sequenceHeaderNumberSize, numberAndSize(value(), "sequence headers"));
        word(word_name::sequencePointer, "");
        word("start step", animated.startStep == format::unresolvedSequence
                               ? "none"
                               : "step " + number(animated.startStep));
        word("reserved", "");
        word("reserved", "");
        for (std::uint32_t i = 0; i < animated.sequenceNum; ++i) {
            word("Sequence Header " + number(i),
                 "step " + number(value() & 0xFFFFU) + ", " + number(value() >> 16U));
        }
    }

    void keyFrameTypes() {
        count(word_name::animationPacketTypeNumber);
        for (std::uint32_t i = 0; next_ < region_.end(); ++i) {
            const KeyFrameForm* form = findKeyFrameForm(value());
            word("Animation Packet Type " + number(i),
                 form == nullptr ? "unknown type" : std::to_string(form->words()) + " words each");
        }
    }

    void controlWords() {
        for (std::uint32_t i = 0; next_ < region_.end(); ++i) {
            const ControlWord control = controlWord(value());
            std::string meaning = "unknown";
            switch (control.kind) {
            case ControlKind::keyFrame:
                meaning = "key frame at " + number(control.target) + ", packet type index " +
                          number(control.typeIndex) + ", number " + number(control.frameNumber);
                break;
            case ControlKind::jump:
                meaning = "go to step " + number(control.target) + ", numbers " +
                          hexadecimal(control.firstNumber) + " and " +
                          hexadecimal(control.secondNumber);
                break;
            case ControlKind::end:
                meaning = "end, number " + hexadecimal(control.secondNumber);
                break;
            case ControlKind::unknown: break;
            }
            word("step " + number(i), meaning);
        }
    }

    /// Names the frames that control words use. Words of frames that none uses have no name.
    void keyFrames() {
        forEachKeyFrame(file_, region_, [&](const KeyFramePiece& piece) {
            const std::string name =
                piece.used ? "key frame at " + number(piece.offset - region_.offset) : "";
            for (std::uint32_t i = 0; i < piece.words; ++i) {
                const bool wide = piece.form != nullptr && i < piece.form->wideValues;
                word(i == 0 ? name : "", wide ? std::to_string(static_cast<std::int32_t>(value()))
                                              : signedHalves(value()));
            }
        });
    }

    void imageEntry() {
        if (region_.index >= file_.images.size()) {
            return;  // the file ends inside the entry
        }
        const Image& image = file_.images[region_.index];
        imageBlock("pixels", image.pixels);
        if (image.clut) {
            imageBlock("lookup table", *image.clut);
        }
    }

    void imageBlock(const std::string& name, const ImageBlock& block) {
        word(name + " position", pair(value() & 0xFFFFU, value() >> 16U));
        word(name + " size",
             block.sized() ? number(block.width) + " x " + number(block.height) : "no size");
        word(name + " offset", number(value()));
    }

    void imageData(bool cluts) {
        std::size_t image = 0;
        for (const Image& entry : file_.images) {
            if (!cluts || entry.clut) {
                const ImageBlock& block = cluts ? *entry.clut : entry.pixels;
                while (next_ < std::min(block.offset + block.words, region_.end())) {
                    word("image " + std::to_string(image), "");
                }
            }
            ++image;
        }
    }

    const VxbFile& file_;
    const Region& region_;
    const WordVisitor& visit_;
    std::uint32_t next_;  ///< the word to describe
};

}  // namespace

void describeRegion(const VxbFile& file, const Region& region, const WordVisitor& visit) {
    Describer(file, region, visit).describe();
}

void describeWords(const VxbFile& file, const WordVisitor& visit) {
    for (const Region& region : file.regions) {
        describeRegion(file, region, visit);
    }
}

std::string placeName(const VxbFile& file, std::uint32_t offset) {
    const Region* region = file.regionAt(offset);
    if (region == nullptr) {
        return offset == file.words.size() ? "end of the file" : "outside of the file";
    }
    const std::uint32_t distance = offset - region->offset;
    return regionName(*region) + (distance > 0 ? " + " + number(distance) : "");
}

std::string_view fieldName(Field field) {
    constexpr std::array<std::string_view, fieldNum> names{
        "",   "V0", "V1", "V2",   "V3",   "N0", "N1", "N2", "N3", "T0",
        "T1", "T2", "T3", "CLUT", "PAGE", "C0", "C1", "C2", "C3", "window"};
    return names[static_cast<std::size_t>(field)];
}

}  // namespace mqf2vxb
