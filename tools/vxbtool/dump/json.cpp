// The decoded structure of a VXB file as JSON.

#include <algorithm>

#include "format/format.h"
#include "format/texture_fields.h"
#include "vxb/key_frame_decoder.h"
#include "vxb/packet_decoder.h"
#include "vxb/word_meaning.h"
#include "vxbtool/dump/dump.h"
#include "vxbtool/shared/vxb_json.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

Json signedHalf(std::uint32_t half) { return static_cast<std::int16_t>(half); }

Json fieldJson(Field field, std::uint32_t value) {
    switch (field) {
    case Field::T0:
    case Field::T1:
    case Field::T2:
    case Field::T3: return {value & 0xFFU, value >> 8U};
    case Field::clut: {
        const ClutPosition clut = clutPosition(value);
        return {clut.x, clut.y};
    }
    case Field::page: {
        const TexturePage page = texturePage(value);
        return {{"position", {page.x, page.y}},
                {"depth", page.depth() > 0 ? Json(page.depth()) : Json(nullptr)},
                {"flagBits", page.flagBits}};
    }
    case Field::window: {
        const TextureWindow window = textureWindow(value);
        return {{"size", {window.width, window.height}}, {"position", {window.x, window.y}}};
    }
    default: break;
    }
    if (isWholeWord(field)) {
        return {{"colour", {value & 0xFFU, value >> 8U & 0xFFU, value >> 16U & 0xFFU}},
                {"drawingCode", value >> 24U}};
    }
    return value;  // an index
}

/// Writes the content of one region. A part that is whole has members of its own; of others the
/// words are listed.
class RegionJson {
public:
    RegionJson(const VxbFile& file, const std::vector<DepthSet>& imageDepths, const Region& region,
               JsonOutput& output)
        : file_(file), imageDepths_(imageDepths), region_(region), output_(output) {}

    void write() {
        output_.openObject();
        output_.member("section", sectionName(sectionOf(region_.part)));
        output_.member("part", regionName(region_));
        output_.member("offset", region_.offset);
        output_.member("words", region_.words);
        writeContent();
        output_.close();
    }

private:
    void writeContent() {
        switch (region_.part) {
        case Part::coordinate: return coordinate(file_.coordinates[region_.index]);
        case Part::primitiveHeader: return header(file_.primitiveHeaders[region_.index]);
        case Part::packetGroup: return packets(file_.packetGroups[region_.index]);
        case Part::independentVertices:
        case Part::sharedVertices:
        case Part::calculatedVertices:
        case Part::independentNormals:
        case Part::sharedNormals:
        case Part::calculatedNormals: return points();
        case Part::animatedCoordinate: return animated(file_.animation.coordinates[region_.index]);
        case Part::controlWords: return controlWords();
        case Part::keyFrames: return keyFrames();
        case Part::imageEntry: return imageEntry();
        case Part::pixels:
        case Part::cluts:
        case Part::unknown: return output_.words("data", wordsFrom(region_.offset));
        default: return listWords();
        }
    }

    /// The words of the region from an offset on.
    [[nodiscard]] std::span<const std::uint32_t> wordsFrom(std::uint32_t offset) const {
        return std::span(file_.words).subspan(offset, region_.end() - offset);
    }

    void listWords() {
        output_.openArray("list");
        describeRegion(file_, region_, [&](const WordMeaning& word) {
            output_.value({{"offset", word.offset},
                           {"value", word.value},
                           {"name", word.name},
                           {"meaning", word.meaning}});
        });
        output_.close();
    }

    void coordinate(const Coordinate& coordinate) {
        output_.member("matrix", coordinate.matrix);
        output_.member("translation", coordinate.translation);
        output_.member("extra", coordinate.extra);
        output_.member("parent", orNull(coordinate.parent));
        output_.member("primitiveHeader", orNull(coordinate.header));
    }

    static Json rangeJson(const SharedRange& range) {
        return {
            {"number", range.number}, {"source", range.source}, {"destination", range.destination}};
    }

    void header(const PrimitiveHeader& header) {
        output_.member("coordinate", orNull(header.coordinate));
        if (header.kind == PrimitiveHeaderKind::sharedVertices) {
            output_.member("sharedVertices", rangeJson(header.vertices));
            output_.member("sharedNormals", rangeJson(header.normals));
            return;
        }
        output_.openArray("types");
        for (std::uint32_t i = 0; i < header.descriptionNum; ++i) {
            const TypeDescription& type = file_.descriptions[header.firstDescription + i];
            output_.value({{"code", type.type},
                           {"form", formName(type.type)},
                           {"number", type.number},
                           {"packetOffset", type.packetOffset},
                           {"packetGroup", orNull(type.group)}});
        }
        output_.close();
    }

    void packets(const PacketGroup& group) {
        output_.member("code", group.code);
        output_.member("form", formName(group.code));
        output_.openArray("polygons");
        std::uint32_t end = group.offset;
        forEachPolygon(file_, group, [&](const PacketPolygon& polygon) {
            Json json{{"offset", polygon.offset}};
            if (polygon.form->strip()) {
                json["place"] = polygon.place;
            }
            forEachField(file_, polygon, [&](Field field, std::uint32_t, std::uint32_t value) {
                if (field != Field::zero) {
                    json[std::string(fieldName(field))] = fieldJson(field, value);
                }
            });
            output_.value(json);
            end = polygon.offset + polygon.words;
        });
        output_.close();
        notDecodedFrom(end);
    }

    void notDecodedFrom(std::uint32_t offset) {
        if (offset < region_.end()) {
            output_.words("notDecoded", wordsFrom(offset));
        }
    }

    void points() {
        const PointBlock block{region_.offset,
                               region_.words / static_cast<std::uint32_t>(format::pointSize)};
        output_.openArray("points");
        for (std::uint32_t i = 0; i < block.number; ++i) {
            const Point point = file_.point(block, i);
            output_.value({point.x, point.y, point.z});
        }
        output_.close();
        notDecodedFrom(block.offset + block.number * static_cast<std::uint32_t>(format::pointSize));
    }

    void animated(const AnimatedCoordinate& animated) {
        output_.member("coordinate", animated.coordinate);
        output_.member("startStep", animated.startStep == format::unresolvedSequence
                                        ? Json(nullptr)
                                        : Json(animated.startStep));
        Json headers = Json::array();
        for (std::uint32_t i = 0; i < animated.sequenceNum; ++i) {
            const std::uint32_t word = file_.words[region_.end() - animated.sequenceNum + i];
            headers.push_back({word & 0xFFFFU, word >> 16U});
        }
        output_.member("sequenceHeaders", headers);
    }

    void controlWords() {
        output_.openArray("steps");
        for (const std::uint32_t word : wordsFrom(region_.offset)) {
            const ControlWord control = controlWord(word);
            switch (control.kind) {
            case ControlKind::keyFrame:
                output_.value({{"keyFrame", control.target},
                               {"typeIndex", control.typeIndex},
                               {"number", control.frameNumber}});
                break;
            case ControlKind::jump:
                output_.value({{"goTo", control.target},
                               {"numbers", {control.firstNumber, control.secondNumber}}});
                break;
            case ControlKind::end: output_.value({{"end", control.secondNumber}}); break;
            case ControlKind::unknown: output_.value({{"unknown", word}}); break;
            }
        }
        output_.close();
    }

    void keyFrames() {
        output_.openArray("keyFrames");
        forEachKeyFrame(file_, region_, [&](const KeyFramePiece& piece) {
            const std::size_t wide = piece.form != nullptr ? piece.form->wideValues : 0;
            const std::size_t values =
                piece.form != nullptr ? piece.form->values() : std::size_t{2} * piece.words;
            Json json{{"offset", piece.offset - region_.offset},
                      {"typeIndex", piece.used ? Json(piece.typeIndex) : Json(nullptr)},
                      {"values", Json::array()}};
            for (std::uint32_t i = 0; i < piece.words; ++i) {
                const std::uint32_t word = file_.words[piece.offset + i];
                if (i < wide) {
                    json["values"].push_back(static_cast<std::int32_t>(word));
                } else {
                    json["values"].push_back(signedHalf(word));
                    json["values"].push_back(signedHalf(word >> 16U));
                }
            }
            // The last half may be free.
            if (json["values"].size() > values) {
                json["values"].erase(values);
            }
            output_.value(json);
        });
        output_.close();
    }

    void imageEntry() {
        if (region_.index >= file_.images.size()) {
            return listWords();  // the file ends inside the entry
        }
        output_.member("image",
                       imageJson(file_.images[region_.index], imageDepths_[region_.index]));
    }

    const VxbFile& file_;
    const std::vector<DepthSet>& imageDepths_;
    const Region& region_;
    JsonOutput& output_;
};

}  // namespace

void writeDump(const std::string& name, const VxbFile& file, const WantedSections& wanted,
               JsonOutput& output) {
    output.openObject();
    output.member("format", "vxbtool-dump");
    output.member("version", 1);
    output.member("file", name);
    output.member("words", file.words.size());
    output.member("errors", file.findings.count(Severity::error));
    output.member("warnings", file.findings.count(Severity::warning));
    output.openArray("parts");
    const std::vector<DepthSet> depths = imageDepths(file);
    for (const Region& region : wantedRegions(file, wanted)) {
        RegionJson(file, depths, region, output).write();
    }
    output.close();
    output.close();
}

}  // namespace vxbtool
