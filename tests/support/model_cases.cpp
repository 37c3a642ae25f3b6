#include "support/model_cases.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <regex>
#include <sstream>

namespace mqf2vxb::tests {
namespace {

using Lines = std::vector<std::pair<std::string, std::string>>;

std::string expanded(const std::string& text) {
    const std::size_t start = text.find('<');
    const std::size_t star = text.find('*', start);
    const std::size_t end = text.find('>', star);
    if (end == std::string::npos) {
        return text;
    }
    std::string result = text.substr(0, start);
    const int count = std::stoi(text.substr(start + 1));
    const std::string repeatedText = text.substr(star + 1, end - star - 1);
    const std::size_t counter = repeatedText.find('%');
    for (int i = 0; i < count; ++i) {
        result += repeatedText.substr(0, counter);
        if (counter != std::string::npos) {
            result += std::to_string(i) + repeatedText.substr(counter + 1);
        }
    }
    return result + expanded(text.substr(end + 1));
}

Words wordsIn(const std::string& text) {
    std::istringstream stream(text);
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(static_cast<std::uint32_t>(std::stoul(word, nullptr, 16)));
    }
    return words;
}

std::string imageIn(const std::string& text) {
    std::istringstream stream(text + "||");
    std::string flag, pixel, clut;
    std::getline(std::getline(std::getline(stream, flag, '|'), pixel, '|'), clut, '|');
    return image(wordsIn(flag).at(0), wordsIn(pixel), wordsIn(clut));
}

ModelCase makeCase(const std::string& name, const Lines& lines) {
    ModelCase result;
    result.name = name;
    result.options = withHex();
    ModelFiles model;
    Files whole;
    const std::map<std::string, std::string*> texts{
        {"geo", &model.geo},        {"srf", &model.srf},         {"axs", &model.axs},
        {"frm", &model.frm},        {"bnd", &model.bnd},         {"sqx", &model.sqx},
        {"report", &result.report}, {"created", &result.created}};
    for (const auto& [key, value] : lines) {
        std::istringstream words(key);
        std::string first, second, third;
        words >> first >> second >> third;
        if (const auto text = texts.find(key); text != texts.end()) {
            *text->second = value;
        } else if (key == "clp") {
            model.clp.push_back(value);
        } else if (key == "image") {
            model.images.push_back(imageIn(value));
        } else if (key == "scale") {
            result.options.scale = std::stof(value);
        } else if (key == "no images") {
            result.options.imageOutput = false;
        } else if (first == "file") {
            whole[second] = value;
            std::replace(whole[second].begin(), whole[second].end(), ';', '\n');
            if (third == "words") {
                whole[second] = bytesOf(wordsIn(value));
            }
        } else {
            result.words.emplace_back(key, wordsIn(value));
        }
    }
    result.files = model.files();
    for (const auto& [file, text] : whole) {
        result.files[file] = text;
    }
    return result;
}

}  // namespace

std::vector<ModelCase> readCases(const std::string& name) {
    std::ifstream file(MQF2VXB_TEST_DATA "/cases/" + name);
    std::vector<ModelCase> cases;
    Lines common;
    Lines lines;
    std::optional<std::string> caseName;
    const auto finish = [&] {
        if (caseName) {
            cases.push_back(makeCase(*caseName, lines));
        } else {
            common = lines;
        }
        lines = common;
    };
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        if (line[0] == '=') {
            finish();
            caseName = line.substr(1);
        } else if (line[0] == ' ') {
            lines.back().second += expanded(line.substr(line.find_first_not_of(' ') - 1));
        } else {
            const std::size_t colon = std::min(line.find(": "), line.size() - 1);
            lines.emplace_back(line.substr(0, colon),
                               expanded(line.substr(std::min(colon + 2, line.size()))));
        }
    }
    finish();
    return cases;
}

Words wordsAt(const Conversion& done, const std::string& place) {
    const Words words = done.words();
    const auto slice = [&](std::size_t from, std::size_t to) {
        from = std::min(from, words.size());
        to = std::clamp(to, from, words.size());
        return Words(words.begin() + static_cast<std::ptrdiff_t>(from),
                     words.begin() + static_cast<std::ptrdiff_t>(to));
    };
    if (place == "words") {
        return words;
    }
    if (place == "packets") {
        // The tops of packets and vertices in the independent global header.
        return words.size() > 9 ? slice(words[8] & 0x7FFFFFFFU, words[9] & 0x7FFFFFFFU) : Words{};
    }
    std::smatch part;
    if (std::regex_match(place, part, std::regex("at (\\d+) (\\d+)"))) {
        return slice(std::stoul(part[1]), std::stoul(part[2]));
    }
    if (std::regex_match(place, part, std::regex("from (.*?)( to (.*))?"))) {
        const auto comment = [&](std::size_t i) {
            return part[i].length() > 0 ? "/* " + part[i].str() + " */" : std::string();
        };
        return between(done.hex(), comment(1), comment(3));
    }
    throw std::invalid_argument("no such place: " + place);
}

std::string reportLine(const std::string& report) {
    static const std::regex masks("(address *):0x[0-9a-f]{8}|(Size {12}):\\d+");
    std::string line = std::regex_replace(report, masks, "$1$2:?");
    std::replace(line.begin(), line.end(), '\n', ';');
    // Every report begins with an empty line.
    return line.empty() ? line : line[0] == ';' ? line.substr(1) : "(no empty line)" + line;
}

}  // namespace mqf2vxb::tests
