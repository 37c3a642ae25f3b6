#include "vxbtool/unpack/key_frame_words.h"

#include <array>

#include "format/key_frame_forms.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::findKeyFrameForm;
using mqf2vxb::KeyFrameForm;
using mqf2vxb::PrimitiveTypeCode;

/// The float that becomes this word; nothing when none does.
std::optional<float> wideValue(std::uint32_t word) {
    constexpr double wrap = 4294967296.0;
    const double plain = word;
    // The smaller of the two in size is what a person would write.
    const std::array<double, 2> values{plain < wrap / 2 ? plain : plain - wrap,
                                       plain < wrap / 2 ? plain - wrap : plain};
    for (const double value : values) {
        if (static_cast<double>(static_cast<float>(value)) == value) {
            return static_cast<float>(value);
        }
    }
    return std::nullopt;
}

}  // namespace

std::uint32_t keyFrameWords(PrimitiveTypeCode type) {
    const KeyFrameForm* const form = findKeyFrameForm(type);
    return form != nullptr ? static_cast<std::uint32_t>(form->words()) : 1;
}

bool KeyFrameWords::canBe(PrimitiveTypeCode type, std::uint32_t first, std::uint32_t end) const {
    const KeyFrameForm* const form = findKeyFrameForm(type);
    if (form == nullptr || first > end || (end - first) % form->words() != 0) {
        return false;
    }
    for (std::uint32_t frame = first; frame < end;
         frame += static_cast<std::uint32_t>(form->words())) {
        for (std::uint32_t i = 0; i < form->wideValues; ++i) {
            if (!wideValue(word(frame + i))) {
                return false;
            }
        }
        const auto halves = static_cast<std::uint32_t>(form->words());
        if (form->halfValues % 2 != 0 && word(frame + halves - 1) >> 16U != 0) {
            return false;
        }
    }
    return true;
}

bool KeyFrameWords::cover(std::uint32_t first, std::uint32_t end, std::span<Part> parts) const {
    const std::size_t room = end - first;
    // Whether the parts from one on can cover the words from one on.
    std::vector<std::vector<bool>> covers(parts.size() + 1, std::vector<bool>(room + 1));
    covers.back()[room] = true;
    const auto coversBehindFrame = [&](std::size_t part, std::size_t at) {
        const std::size_t behind = at + keyFrameWords(parts[part].type);
        return behind <= room && covers[part][behind] &&
               canBe(parts[part].type, first + static_cast<std::uint32_t>(at),
                     first + static_cast<std::uint32_t>(behind));
    };
    for (std::size_t part = parts.size(); part-- > 0;) {
        for (std::size_t at = room + 1; at-- > 0;) {
            covers[part][at] = covers[part + 1][at] || coversBehindFrame(part, at);
        }
    }
    if (!covers.front().front()) {
        return false;
    }
    std::size_t at = 0;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::size_t words = keyFrameWords(parts[i].type);
        at += parts[i].ratherOne && coversBehindFrame(i, at) ? words : 0;
        while (!covers[i + 1][at]) {
            at += words;
        }
        parts[i].end = first + static_cast<std::uint32_t>(at);
    }
    return true;
}

model_text::KeyFrameGroup KeyFrameWords::text(PrimitiveTypeCode type, std::uint32_t first,
                                              std::uint32_t end) const {
    model_text::KeyFrameGroup text;
    text.type = type;
    const KeyFrameForm* const form = findKeyFrameForm(type);
    if (form == nullptr) {
        return text;
    }
    const auto words = static_cast<std::uint32_t>(form->words());
    for (std::uint32_t frame = first; frame + words <= end; frame += words) {
        for (std::uint32_t i = 0; i < form->wideValues; ++i) {
            const std::uint32_t value = word(frame + i);
            text.values.push_back(
                wideValue(value).value_or(static_cast<float>(static_cast<std::int32_t>(value))));
        }
        for (std::uint32_t i = 0; i < form->halfValues; ++i) {
            const std::uint32_t both =
                word(frame + static_cast<std::uint32_t>(form->wideValues) + i / 2);
            text.values.push_back(
                static_cast<float>(static_cast<std::int16_t>(i % 2 == 0 ? both : both >> 16U)));
        }
    }
    return text;
}

}  // namespace vxbtool::unpack
