#include "vxbtool/packet_forms/packet_form_tables.h"

#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "format/packet_forms.h"
#include "vxb/word_meaning.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

using mqf2vxb::Field;
using mqf2vxb::PacketForm;
using mqf2vxb::PacketWord;
using mqf2vxb::PacketWords;

constexpr std::string_view introduction = R"(# Packet forms

The words of the packets of each type code. The bits 0x01000000 (shared), 0x00200000 and 0x00100000
of a code change no form.

`[low, high]` are the two halves of a word; a name without brackets fills its word. V and N are the
vertex and normal indices of the corners, T their texture coordinates (u in bits 0 to 7, v in bits 8
to 15), C their colour words, CLUT the position of the colour table, PAGE the texture page, W the
texture window, 0 a zero half and Z a zero word. Every polygon begins with the opening words. A
strip begins with a word that counts its polygons; its first polygon has the words of "packet", each
further one those of "further".

This page is made from the program: `vxbtool packet-forms > docs/packet-forms.md`.
)";

std::string_view fieldText(Field field) {
    return field == Field::zero ? "0" : field == Field::window ? "W" : mqf2vxb::fieldName(field);
}

std::string wordText(PacketWord word) {
    if (word.low == Field::zero && word.high == Field::zero) {
        return "Z";
    }
    if (mqf2vxb::isWholeWord(word.low)) {
        return std::string(fieldText(word.low));
    }
    return fmt::format("[{}, {}]", fieldText(word.low), fieldText(word.high));
}

std::string wordsText(const PacketWords& words) {
    std::string text;
    for (const PacketWord word : words) {
        text += (text.empty() ? "" : " ") + wordText(word);
    }
    return text;
}

std::string rowOf(const PacketForm& form) {
    if (form.strip()) {
        return fmt::format("| 0x{:05x} | {} | {} | {} | {}, {} |\n", form.code,
                           wordsText(form.opening), wordsText(form.packet), wordsText(form.further),
                           form.size(), form.furtherSize());
    }
    return fmt::format("| 0x{:05x} | {} | {} | | {} |\n", form.code, wordsText(form.opening),
                       wordsText(form.packet), form.size());
}

}  // namespace

std::string packetFormDocument() {
    std::string document(introduction);
    for (const mqf2vxb::PacketFamilyTraits& family : mqf2vxb::packetFamilies) {
        document += fmt::format("\n## {}\n\n| Code | Opening | Packet | Further | Words |\n"
                                "|---|---|---|---|---|\n",
                                family.title);
        for (const PacketForm& form : mqf2vxb::packetForms()) {
            if (form.family == family.family) {
                document += rowOf(form);
            }
        }
    }
    return document;
}

void addPacketFormTables(CLI::App& app, Session& session) {
    CLI::App* command =
        app.add_subcommand("packet-forms", "Prints docs/packet-forms.md")->group("");
    command->callback([&session] {
        printText(packetFormDocument());
        session.status = ExitStatus::good;
    });
}

}  // namespace vxbtool
