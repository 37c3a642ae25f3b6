#include "format/packet_forms.h"

namespace mqf2vxb {
namespace {

using enum Field;

/// The index and texture words that follow a packet's opening, for an untextured packet and for
/// its textured twin. Free halves of texture words carry indices wherever a form has room.
struct Body {
    PacketWords plain;
    PacketWords textured;
};

template <std::size_t PlainSize, std::size_t TexturedSize>
constexpr Body body(const PacketWord (&plain)[PlainSize],
                    const PacketWord (&textured)[TexturedSize]) {
    Body result;
    result.plain.add(plain);
    result.textured.add(textured);
    return result;
}

/// The bodies of one kind of packet by the shape of its polygon.
struct Bodies {
    Body triangle;
    Body quadrangle;
    Body stripFirst;
    Body stripFurther;
};

constexpr PacketWord texture0{T0, clut};
constexpr PacketWord texture1{T1, page};

constexpr Body litFlatTriangle =
    body({{N0, V0}, {V1, V2}}, {texture0, texture1, {T2, zero}, {N0, V0}, {V1, V2}});

/// One normal for the polygon.
constexpr Bodies litFlat{
    litFlatTriangle,
    body({{N0, V0}, {V1, V2}, {V3, zero}},
         {texture0, texture1, {T2, zero}, {T3, N0}, {V0, V1}, {V2, V3}}),
    litFlatTriangle,
    body({{N0, V2}}, {texture0, texture1, {T2, zero}, {N0, V2}}),
};

constexpr Body litSmoothTriangle = body(
    {{N0, V0}, {N1, V1}, {N2, V2}}, {texture0, texture1, {T2, zero}, {N0, V0}, {N1, V1}, {N2, V2}});

/// One normal for each corner.
constexpr Bodies litSmooth{
    litSmoothTriangle,
    body({{N0, V0}, {N1, V1}, {N2, V2}, {N3, V3}},
         {texture0, texture1, {T2, N0}, {T3, V0}, {N1, V1}, {N2, V2}, {N3, V3}}),
    litSmoothTriangle,
    body({{N0, N1}, {N2, V2}}, {texture0, texture1, {T2, zero}, {N0, N1}, {N2, V2}}),
};

constexpr Body unlitTriangle =
    body({{V0, V1}, {V2, zero}}, {texture0, texture1, {T2, V0}, {V1, V2}});

/// No normals; smooth changes the colours only.
constexpr Bodies unlit{
    unlitTriangle,
    body({{V0, V1}, {V2, V3}}, {texture0, texture1, {T2, V0}, {T3, V1}, {V2, V3}}),
    unlitTriangle,
    body({{V2, zero}}, {texture0, texture1, {T2, V2}}),
};

/// The drawing packet that a double packet holds twice: a zero word, and for every corner its
/// colour if it has one, a zero word and its texture if there is one.
constexpr PacketWords drawingPacket(std::size_t corners, bool smooth, bool textured) {
    constexpr std::array<PacketWord, 4> texture{{texture0, texture1, {T2, zero}, {T3, zero}}};
    PacketWords words;
    words.add({zero, zero});
    for (std::size_t i = 0; i < corners; ++i) {
        if (i == 0 || smooth) {
            words.add({cornerField(C0, i), zero});
        }
        words.add({zero, zero});
        if (textured) {
            words.add(texture[i]);
        }
    }
    return words;
}

/// Two drawing packets and the indices behind the second. In a textured triangle the first index
/// rides in the free half of the last texture word.
constexpr PacketWords doublePacket(PacketShape shape, bool smooth, bool textured, bool further) {
    const bool quadrangle = shape == PacketShape::quadrangle;
    const PacketWords drawing = drawingPacket(quadrangle ? 4 : 3, smooth, textured);
    PacketWords words;
    words.add(drawing);
    words.add(drawing);
    if (quadrangle) {
        words.add({V0, V1});
        words.add({V2, V3});
    } else if (textured) {
        words.fillLast(further ? V2 : V0);
        if (!further) {
            words.add({V1, V2});
        }
    } else {
        if (!further) {
            words.add({V0, V1});
        }
        words.add({V2, zero});
    }
    return words;
}

constexpr PrimitiveTypeCode shapeBits(PacketShape shape) {
    switch (shape) {
    case PacketShape::triangle: return type_code::triangle;
    case PacketShape::quadrangle: return type_code::quadrangle;
    default: return type_code::strip;
    }
}

/// Whether the family has a form with these low bits: a window needs a texture, and outside the
/// lit families the colours of the corners come with the smooth bit.
constexpr bool hasForm(PacketFamily family, PrimitiveTypeCode low) {
    const bool textured = (low & type_code::textured) != 0;
    const bool windowed = family == PacketFamily::window || family == PacketFamily::unlitWindow;
    const bool lit = family == PacketFamily::lit || family == PacketFamily::window;
    return (textured || !windowed) && (lit || (low & type_code::colourPerCorner) == 0);
}

/// How many colour words a packet has. A lit textured polygon has its own light for colour unless
/// each corner has one.
constexpr std::size_t colourCount(const PacketForm& form) {
    const PrimitiveTypeCode perCorner = form.lit() ? type_code::colourPerCorner : type_code::smooth;
    if ((form.code & perCorner) != 0) {
        return form.corners();
    }
    return form.lit() && form.textured ? 0 : 1;
}

constexpr PacketForm makeForm(PacketFamily family, PacketShape shape, PrimitiveTypeCode low) {
    PacketForm form;
    form.code = packetFamily(family).bits | shapeBits(shape) | low;
    form.family = family;
    form.shape = shape;
    form.textured = (low & type_code::textured) != 0;
    form.colours = colourCount(form);

    const bool smooth = (low & type_code::smooth) != 0;
    if (family == PacketFamily::doubleImage) {
        form.packet = doublePacket(shape, smooth, form.textured, false);
        if (form.strip()) {
            form.further = doublePacket(shape, smooth, form.textured, true);
        }
        return form;
    }

    if (form.windowed()) {
        form.opening.add({window, zero});
    }
    for (std::size_t i = 0; i < form.colours; ++i) {
        form.opening.add({cornerField(C0, i), zero});
    }
    const Bodies& bodies = !form.lit() ? unlit : smooth ? litSmooth : litFlat;
    const auto words = [&](const Body& body) { return form.textured ? body.textured : body.plain; };
    switch (shape) {
    case PacketShape::triangle: form.packet = words(bodies.triangle); break;
    case PacketShape::quadrangle: form.packet = words(bodies.quadrangle); break;
    case PacketShape::strip:
        form.packet = words(bodies.stripFirst);
        form.further = words(bodies.stripFurther);
        break;
    }
    return form;
}

constexpr std::size_t formNum = 66;

constexpr std::array<PacketForm, formNum> makeForms() {
    std::array<PacketForm, formNum> forms;
    std::size_t size = 0;
    for (const PacketFamilyTraits& traits : packetFamilies) {
        const PacketFamily family = traits.family;
        for (const PacketShape shape :
             {PacketShape::triangle, PacketShape::quadrangle, PacketShape::strip}) {
            for (PrimitiveTypeCode low = 0; low < type_code::triangle; ++low) {
                if (hasForm(family, low)) {
                    forms[size++] = makeForm(family, shape, low);
                }
            }
        }
    }
    return forms;
}

constexpr std::array<PacketForm, formNum> forms = makeForms();

/// The bits in which the codes of the forms differ, side by side.
constexpr std::size_t formKey(PrimitiveTypeCode code) {
    return (code & 0x1FU) | (code & 0x340U) >> 1U;
}

/// The form of each key. A key that no form has gives form 0, which the caller tells by its code.
constexpr std::array<std::uint8_t, 512> indexForms() {
    std::array<std::uint8_t, 512> index{};
    for (std::size_t i = 0; i < forms.size(); ++i) {
        index[formKey(forms[i].code)] = static_cast<std::uint8_t>(i);
    }
    return index;
}

constexpr std::array<std::uint8_t, 512> formOfKey = indexForms();

constexpr bool everyFormFindsItself() {
    for (std::size_t i = 0; i < forms.size(); ++i) {
        if (formOfKey[formKey(forms[i].code)] != i) {
            return false;
        }
    }
    return true;
}
static_assert(everyFormFindsItself());

}  // namespace

std::span<const PacketForm> packetForms() { return forms; }

const PacketForm* findPacketForm(PrimitiveTypeCode code) {
    const PrimitiveTypeCode wanted = type_code::form(code);
    const PacketForm* form = &forms[formOfKey[formKey(wanted)]];
    return form->code == wanted ? form : nullptr;
}

}  // namespace mqf2vxb
