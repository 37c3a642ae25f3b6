#include "support/memory_files.h"

#include <algorithm>
#include <sstream>

#include "base/diagnostics.h"
#include "run/convert.h"

namespace mqf2vxb::tests {
namespace {

class MemoryOutputFile final : public OutputFile {
public:
    MemoryOutputFile(std::string& contents, std::size_t& room) : contents_(contents), room_(room) {}

    bool write(std::string_view bytes) override {
        const std::size_t fitting = std::min(bytes.size(), room_);
        contents_ += bytes.substr(0, fitting);
        room_ -= fitting;
        return fitting == bytes.size();
    }
    bool close() override { return true; }

private:
    std::string& contents_;
    std::size_t& room_;
};

}  // namespace

std::optional<FileContents> MemoryFileSystem::read(const std::string& name) {
    opened.push_back(name);
    const auto file = inputs.find(name);
    if (file == inputs.end()) {
        return std::nullopt;
    }
    FileContents contents(file->second.size());
    std::copy(file->second.begin(), file->second.end(), contents.data());
    return contents;
}

std::optional<FileContents> MemoryFileSystem::readAgain(const std::string& name, std::size_t size) {
    for (const auto& [changed, bytes] : later) {
        inputs[changed] = bytes;
    }
    return InputFiles::readAgain(name, size);
}

std::unique_ptr<OutputFile> MemoryFileSystem::create(const std::string& name) {
    if (name == locked) {
        return nullptr;
    }
    return std::make_unique<MemoryOutputFile>(outputs[name] = {}, room);
}

Words Conversion::words() const {
    const auto vxb = outputs.find("m.vxb");
    return vxb == outputs.end() ? Words{} : wordsOf(vxb->second);
}

Conversion convertFiles(MemoryFileSystem& files, const RunOptions& options) {
    Conversion result;
    try {
        convert(options, "m.mqf", files, files);
    } catch (const Report& report) {
        result.report = report.text();
        result.place = report.place().file + ":" + std::to_string(report.place().line);
    }
    result.outputs = files.outputs;
    result.opened = files.opened;
    return result;
}

Conversion convertFiles(const Files& files, const RunOptions& options) {
    MemoryFileSystem memory(files);
    return convertFiles(memory, options);
}

RunOptions withHex() {
    RunOptions options;
    options.hexOutput = true;
    options.hexName = "hex";
    return options;
}

Files ModelFiles::files() const {
    Files files;
    std::string mqf = "@MQF970401\n";
    const auto add = [&](const std::string& key, const std::string& name, const std::string& text) {
        if (!text.empty()) {
            mqf += key + "=" + name + "\n";
            files[name] = "@" + key + "970401\n" + lines(text);
        }
    };
    add("GEO", "g.geo", geo);
    add("SRF", "s.srf", srf);
    add("AXS", "a.axs", axs);
    add("FRM", "f.frm", frm);
    add("BND", "b.bnd", bnd);
    if (!sqx.empty()) {
        files["g.sqx"] = "@SQX970401\n" + lines(sqx);
    }
    const auto list = [&](const std::string& count, const std::string& slot, std::size_t number) {
        mqf += number > 0 ? count + std::to_string(number) + "\n" : "";
        for (std::size_t i = 0; i < number; ++i) {
            const std::string n = std::to_string(i);
            mqf += slot + "[" + n + "]=" + n + (slot == "TEX" ? ".pxl\n" : ".clp\n");
        }
    };
    list("NTEX=", "TEX", images.size());
    list("NCLP=", "CLP", clp.size());
    for (std::size_t i = 0; i < images.size(); ++i) {
        files[std::to_string(i) + ".pxl"] = images[i];
    }
    for (std::size_t i = 0; i < clp.size(); ++i) {
        files[std::to_string(i) + ".clp"] = "@CLP970401\n" + lines(clp[i]);
    }
    files["m.mqf"] = mqf;
    return files;
}

ModelFiles smallModel() {
    ModelFiles model;
    model.geo = "7 2 5;0 0 0;10 0 0;10 10 0;0 10 0;0 0 20;10 0 20;5.9 -5.9 20;0 0 1;0 -1 0;"
                "0 0 1 2 0 0 1 1 0;1 0 1 2 3 0 0 0 0;0 3 4 5 0 1 1 0 0;"
                "0 4 5 6 0 0 0 0 0;0 6 4 5 0 1 1 1 0";
    model.srf = "4;0 0 F C 255 128 0;1 1 G T 0 0 0 31 0 0 31 31 31;"
                "2 4 G G 1 2 3 4 5 6 7 8 9 0 0 0;3-4 2 F D 1 0 1 2 3 4 5 0 0 9 8 7";
    model.axs = "2;1 1 0 0;2 0 0 20";
    model.frm = "=NULL;3;4096 0 0 0 4096 0 0 0 4096 0 0 -500 1 -2 3 0;"
                "-1 0 0 0 1 0 0 0 1 7 8 9 0 0 0 0;1 2 3 4 5 6 7 8 9 -1 -2 -3 4 5 6 1;"
                "1 4 0-3;2 3 4,5 6";
    model.bnd = "4;1 0 1 1;1 2 2 3 4";
    model.clp = {"COORDINATE;2;1 2 walk;START walk 0x1;KEY2 walk stop;2 0 none;"
                 "walk;SEQ 5 ps0r1t1 1;SEQ 6 ps0r0t0 0;GOTO walk 0x1 0x2;stop;END 0x3;"
                 "TYPE ps0r1t1;1 2 3 4 5 6;-1 -2 -3 -4 -5 -6;TYPE ps0r0t0;7 8",
                 "COORDINATE;1;0 1 a;START a 0xff;a;SEQ 0 ps9r0t9 1;TYPE ps9r0t9;1 2 3 4;5 6 7 8;"
                 "TYPE ps0r1t1"};
    model.images = {image(8, {0x01E00140, 0x00200008, 0x03020100, 0x07060504},
                          {0x01E00010, 0x00010010, 0x7FFF0000}),
                    image(2, {0x00000200, 0x00010001, 0x0000801F})};
    return model;
}

std::string lines(std::string_view text) {
    std::string result(text);
    std::replace(result.begin(), result.end(), ';', '\n');
    return result.empty() || result.back() == '\n' ? result : result + "\n";
}

std::string bytesOf(const Words& words) {
    std::string bytes;
    for (const std::uint32_t word : words) {
        for (unsigned shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<char>(word >> shift & 0xFFU));
        }
    }
    return bytes;
}

Words wordsOf(std::string_view bytes) {
    Words words(bytes.size() / 4);
    for (std::size_t i = 0; i < 4 * words.size(); ++i) {
        words[i / 4] |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * (i % 4));
    }
    return words;
}

std::string image(std::uint32_t flag, const Words& pixel, const Words& clut) {
    Words words{0x10, flag};
    for (const Words* block : {&clut, &pixel}) {
        if (!block->empty() || block == &pixel) {
            words.push_back(static_cast<std::uint32_t>(4 * (1 + block->size())));
            words.insert(words.end(), block->begin(), block->end());
        }
    }
    return bytesOf(words);
}

std::string show(const Words& words) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += formatText("%3zu: 0x%08x\n", i, words[i]);
    }
    return text;
}

Words between(const std::string& hex, std::string_view comment, std::string_view end) {
    Words words;
    std::istringstream text(hex);
    std::string word;
    std::string found;
    bool inside = false;
    while (text >> word && std::getline(text, found)) {
        found.erase(0, 1);
        inside = (inside && (end.empty() || found != end)) || found == comment;
        if (inside) {
            words.push_back(static_cast<std::uint32_t>(std::stoul(word, nullptr, 16)));
        }
    }
    return words;
}

std::string repeated(std::size_t count, std::string_view line) {
    std::string text;
    text.reserve(count * line.size());
    for (std::size_t i = 0; i < count; ++i) {
        text += line;
    }
    return text;
}

std::string notCorrect(const std::string& file, int line, const std::string& cause) {
    return "\nNot correct data!\n\nFile Name:" + file + "\n" +
           (line > 0 ? "Line     :" + std::to_string(line) + "\n" : "") + "Cause    :" + cause +
           "\n";
}

}  // namespace mqf2vxb::tests
