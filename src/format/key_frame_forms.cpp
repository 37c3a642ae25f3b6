#include "format/key_frame_forms.h"

#include <algorithm>
#include <array>

namespace mqf2vxb {
namespace {

/// The last three hexadecimal digits of a type are those of its scale, rotation and translation:
/// 1 for three values, 9 for three translations of 16 bits or one scale, 0 for none.
constexpr std::array<KeyFrameForm, 12> forms{{
    {0x03000000, 0, 2},
    {0x03000001, 3, 0},
    {0x03000009, 0, 3},
    {0x03000010, 0, 3},
    {0x03000011, 3, 3},
    {0x03000019, 0, 6},
    {0x03000100, 0, 3},
    {0x03000111, 3, 6},
    {0x03000119, 0, 9},
    {0x03000909, 0, 4},
    {0x03000910, 0, 4},
    {0x03000911, 3, 4},
}};

}  // namespace

const KeyFrameForm* findKeyFrameForm(PrimitiveTypeCode type) {
    const auto* const form = std::find_if(forms.begin(), forms.end(),
                                          [&](const KeyFrameForm& f) { return f.type == type; });
    return form != forms.end() ? form : nullptr;
}

}  // namespace mqf2vxb
