#include <algorithm>
#include <bitset>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "format/format.h"
#include "format/key_frame_forms.h"
#include "format/packet_forms.h"
#include "format/texture_fields.h"
#include "support/random_model.h"
#include "vxb/packet_decoder.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"
#include "vxbtool/dump/dump.h"
#include "vxbtool/shared/image_depths.h"
#include "vxbtool/shared/json_output.h"

namespace vxbtool {
namespace {

using mqf2vxb::tests::bytesOf;
using mqf2vxb::tests::Words;
using nlohmann::json;

std::uint32_t word(const json& value) {
    return static_cast<std::uint32_t>(value.get<std::int64_t>());
}
std::uint32_t halves(const json& low, const json& high) {
    return (word(low) & 0xFFFFU) | word(high) << 16U;
}

json dumpOf(const mqf2vxb::VxbFile& file) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const stream = open_memstream(&text, &size);
    TextOutput output(stream);
    JsonOutput parts(output);
    writeDump("m.vxb", file, WantedSections{}, parts);
    output.finish();
    std::fclose(stream);
    json result = json::parse(text);
    std::free(text);
    return result;
}

/// The value of a packet's field from its member.
std::uint32_t fieldValue(mqf2vxb::Field field, const json& value) {
    switch (field) {
    case mqf2vxb::Field::T0:
    case mqf2vxb::Field::T1:
    case mqf2vxb::Field::T2:
    case mqf2vxb::Field::T3: return word(value[0]) | word(value[1]) << 8U;
    case mqf2vxb::Field::clut: return mqf2vxb::clutField({word(value[0]), word(value[1])});
    case mqf2vxb::Field::page: {
        const auto bits = value["depth"].is_null() ? 32U : word(value["depth"]);
        const auto mode = static_cast<std::uint32_t>(std::bitset<8>(bits / 4 - 1).count());
        return mqf2vxb::pageField({word(value["position"][0]), word(value["position"][1]), mode,
                                   word(value["flagBits"])});
    }
    case mqf2vxb::Field::window:
        return mqf2vxb::windowWord({word(value["size"][0]), word(value["size"][1]),
                                    word(value["position"][0]), word(value["position"][1])});
    default: break;
    }
    if (!mqf2vxb::isWholeWord(field)) {
        return word(value);
    }
    const json& colour = value["colour"];
    return word(colour[0]) | word(colour[1]) << 8U | word(colour[2]) << 16U |
           word(value["drawingCode"]) << 24U;
}

/// Makes the words of a file from its dump alone, but for the words that its members leave out.
class Rebuilt {
public:
    explicit Rebuilt(const json& dump) : words_(dump["words"].get<std::size_t>()) {
        for (const json& part : dump["parts"]) {
            at_ = part["offset"].get<std::size_t>();
            if (part["part"].get<std::string>() == "types of key frames") {
                for (const json& item : part["list"]) {
                    types_.push_back(word(item["value"]));
                }
            }
            add(part);
        }
    }

    [[nodiscard]] const Words& words() const { return words_; }

private:
    void put(std::uint32_t value) { words_.at(at_++) = value; }

    void add(const json& part) {
        for (const json& item : part.value("list", json::array())) {
            ASSERT_EQ(item["offset"], at_);
            put(word(item["value"]));
        }
        for (const json& value : part.value("data", json::array())) {
            put(word(value));
        }
        if (part.contains("matrix")) {
            coordinate(part);
        } else if (part.contains("types")) {
            at_ += 3;
            for (const json& type : part["types"]) {
                put(word(type["code"]));
                put(0x80000002U | word(type["number"]) << 16U);
                put(word(type["packetOffset"]));
            }
        } else if (part.contains("sharedVertices")) {
            at_ += 5;
            for (const char* const name : {"sharedVertices", "sharedNormals"}) {
                put(word(part[name]["number"]));
                put(word(part[name]["source"]));
                put(word(part[name]["destination"]));
            }
        }
        for (const json& point : part.value("points", json::array())) {
            put(halves(point[0], point[1]));
            put(word(point[2]) & 0xFFFFU);
        }
        if (part.contains("polygons")) {
            packets(part);
        }
        if (part.contains("sequenceHeaders")) {
            animated(part);
        }
        for (const json& step : part.value("steps", json::array())) {
            control(step);
        }
        for (const json& frame : part.value("keyFrames", json::array())) {
            keyFrame(frame);
        }
    }

    void coordinate(const json& part) {
        const json& matrix = part["matrix"];
        ++at_;
        for (std::size_t i = 0; i < 8; i += 2) {
            put(halves(matrix[i], matrix[i + 1]));
        }
        put(word(matrix[8]) & 0xFFFFU);
        for (const json& value : part["translation"]) {
            put(word(value));
        }
        at_ += 8;
        put(halves(part["extra"][0], part["extra"][1]));
        put(word(part["extra"][2]) & 0xFFFFU);
        const std::string name = part["part"];
        const std::size_t own = std::stoul(name.substr(name.find(' ')));
        const std::size_t first = part["offset"].get<std::size_t>() - 20 * own;
        put(part["parent"].is_null()
                ? 0
                : static_cast<std::uint32_t>(first) + 20 * word(part["parent"]));
    }

    void packets(const json& part) {
        const mqf2vxb::PacketForm& form = *mqf2vxb::findPacketForm(word(part["code"]));
        std::size_t countWord = 0;
        for (const json& polygon : part["polygons"]) {
            const bool further = form.strip() && polygon["place"] != 0;
            if (form.strip()) {
                countWord = further ? countWord : at_++;
                words_.at(countWord) = word(polygon["place"]) + 1;
            }
            ASSERT_EQ(polygon["offset"], at_);
            for (const auto* const words :
                 {&form.opening, further ? &form.further : &form.packet}) {
                for (const mqf2vxb::PacketWord fields : *words) {
                    const auto value = [&](mqf2vxb::Field field) {
                        return field == mqf2vxb::Field::zero
                                   ? 0
                                   : fieldValue(field,
                                                polygon[std::string(mqf2vxb::fieldName(field))]);
                    };
                    put(value(fields.low) | value(fields.high) << 16U);
                }
            }
        }
    }

    void animated(const json& part) {
        put(0x04000000U | (1 + 20 * word(part["coordinate"])));
        const json& headers = part["sequenceHeaders"];
        const auto number = static_cast<std::uint32_t>(headers.size());
        put(number << 16U | (6 + number));
        put(0);
        put(part["startStep"].is_null() ? 0xFFFF0000U : word(part["startStep"]) << 16U);
        at_ += 2;
        for (const json& header : headers) {
            put(halves(header[0], header[1]));
        }
    }

    void control(const json& step) {
        if (step.contains("keyFrame")) {
            put(word(step["keyFrame"]) | word(step["number"]) << 16U |
                word(step["typeIndex"]) << 24U);
        } else if (step.contains("goTo")) {
            put(0x80000000U | word(step["goTo"]) | word(step["numbers"][1]) << 16U |
                word(step["numbers"][0]) << 23U);
        } else {
            put(step.contains("end") ? 0xC0800000U | word(step["end"]) << 16U
                                     : word(step["unknown"]));
        }
    }

    void keyFrame(const json& frame) {
        const std::vector<std::int64_t> values = frame["values"];
        const mqf2vxb::KeyFrameForm* form = nullptr;
        // The index 0 may be that of frames of one word.
        if (!frame["typeIndex"].is_null() && (frame["typeIndex"] > 0 || values.size() > 2)) {
            form = mqf2vxb::findKeyFrameForm(types_.at(1 + word(frame["typeIndex"])));
        }
        std::size_t i = 0;
        for (; form != nullptr && i < form->wideValues; ++i) {
            put(static_cast<std::uint32_t>(values.at(i)));
        }
        for (; i < values.size(); i += 2) {
            put(halves(values[i], i + 1 < values.size() ? values[i + 1] : 0));
        }
    }

    Words words_;
    Words types_;  // the part's words: the number, then the types
    std::size_t at_ = 0;
};

TEST(Dump, JsonHoldsEveryValueOfTheFile) {
    // What it leaves out: where headers lead, what never changes, and what stands in other members.
    const std::set<std::string> leftOut{"Next Primitive Pointer",
                                        "Independent Primitive Global Header Pointer",
                                        "Shared Primitive Global Header Pointer",
                                        "Type Number",
                                        "Type",
                                        "Polygon Number, Size",
                                        "pixels position",
                                        "pixels size",
                                        "pixels offset",
                                        "lookup table position",
                                        "lookup table size",
                                        "lookup table offset"};
    std::size_t compared = 0;
    std::size_t all = 0;
    for (std::uint32_t seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const mqf2vxb::VxbFile file =
            mqf2vxb::readVxb(bytesOf(convertFiles(mqf2vxb::tests::randomModel(seed)).words()));
        const Rebuilt rebuilt(dumpOf(file));
        describeWords(file, [&](const mqf2vxb::WordMeaning& meaning) {
            ++all;
            if (rebuilt.words()[meaning.offset] == 0 && leftOut.contains(meaning.name)) {
                return;
            }
            ++compared;
            EXPECT_EQ(rebuilt.words()[meaning.offset], meaning.value)
                << meaning.name << ", word " << meaning.offset;
        });
    }
    EXPECT_GT(compared, all * 9 / 10);
}

/// The depths of an image, found by looking at each of its places.
DepthSet depthsOf(const mqf2vxb::VxbFile& file, const mqf2vxb::ImageBlock& block) {
    DepthSet inside;
    DepthSet onPage;
    for (const mqf2vxb::PacketGroup& group : file.packetGroups) {
        if (group.form == nullptr || !group.form->textured) {
            continue;
        }
        forEachPolygon(file, group, [&](const mqf2vxb::PacketPolygon& polygon) {
            const auto page = mqf2vxb::texturePage(polygon[mqf2vxb::Field::page]);
            onPage[page.mode] =
                onPage[page.mode] || (page.x == block.x / 64 * 64 && page.y == block.y / 256 * 256);
            for (std::size_t corner = 0; corner < polygon.corners(); ++corner) {
                const std::uint32_t texel = polygon[cornerField(mqf2vxb::Field::T0, corner)];
                std::uint32_t u = texel & 0xFFU;
                std::uint32_t v = texel >> 8U;
                if (polygon.has(mqf2vxb::Field::window)) {
                    const auto window = mqf2vxb::textureWindow(polygon[mqf2vxb::Field::window]);
                    u = window.x + u % window.width;
                    v = window.y + v % window.height;
                }
                const std::uint32_t x = (page.x + (u << page.mode) / 4) % 1024;
                const std::uint32_t y = (page.y + v) % 1024;
                inside[page.mode] =
                    inside[page.mode] || (x >= block.x && x < block.x + block.width &&
                                          y >= block.y && y < block.y + block.height);
            }
        });
    }
    return inside.any() ? inside : onPage;
}

TEST(ImageDepths, AreThoseOfTexelsInsideElseOfThePage) {
    std::map<std::size_t, int> images;  // by the number of depths
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        const mqf2vxb::VxbFile file =
            mqf2vxb::readVxb(bytesOf(convertFiles(mqf2vxb::tests::randomModel(seed)).words()));
        const std::vector<DepthSet> depths = imageDepths(file);
        for (std::size_t i = 0; i < depths.size(); ++i) {
            ASSERT_TRUE(file.images[i].pixels.sized());
            EXPECT_EQ(depths[i], depthsOf(file, file.images[i].pixels))
                << "seed " << seed << ", image " << i;
            ++images[depths[i].count()];
        }
    }
    EXPECT_GT(images[0], 10);
    EXPECT_GT(images[1], 10);
    EXPECT_GT(images[2], 0);
}

}  // namespace
}  // namespace vxbtool
