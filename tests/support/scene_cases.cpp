#include "support/scene_cases.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "vxb/vxb_reader.h"

namespace mqf2vxb::tests {
namespace {

Words hexWords(const std::string& text) {
    std::istringstream words(text);
    Words result;
    for (std::string word; words >> word;) {
        result.push_back(static_cast<std::uint32_t>(std::stoul(word, nullptr, 16)));
    }
    return result;
}

}  // namespace

VxbFile fileOfLines(const std::string& lines) {
    ModelFiles model;
    RunOptions options;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const std::string key = line.substr(0, line.find(' '));
        const std::string text = line.size() > key.size() ? line.substr(key.size() + 1) : "";
        if (key == "pxl") {
            const std::size_t pixels = text.find('/');
            const std::size_t table = text.find('/', pixels + 1);
            model.images.push_back(
                image(hexWords(text.substr(0, pixels)).front(),
                      hexWords(text.substr(pixels + 1, table - pixels - 1)),
                      table == std::string::npos ? Words() : hexWords(text.substr(table + 1))));
        } else if (key == "clp") {
            model.clp.push_back(text);
        } else if (key == "ni") {
            options.imageOutput = false;
        } else {
            (key == "geo"   ? model.geo
             : key == "srf" ? model.srf
             : key == "frm" ? model.frm
                            : model.bnd) = text;
        }
    }
    const Conversion conversion = convertFiles(model, options);
    EXPECT_EQ(conversion.report, "");
    return readVxb(conversion.outputs.at("m.vxb"));
}

std::size_t forEachSceneCase(const std::string& name,
                             const std::function<void(const std::string& title, const VxbFile& file,
                                                      const std::string& expected)>& check) {
    std::ifstream cases(MQF2VXB_TEST_DATA "/" + name);
    std::string title, model, expected;
    std::size_t number = 0;
    const auto finish = [&] {
        if (!title.empty()) {
            check(title, fileOfLines(model), expected);
            ++number;
        }
    };
    bool behind = false;
    for (std::string line; std::getline(cases, line);) {
        if (line.starts_with("= ")) {
            finish();
            title = line;
            model.clear();
            expected.clear();
            behind = false;
        } else if (line == "-") {
            behind = true;
        } else {
            (behind ? expected : model) += line + "\n";
        }
    }
    finish();
    return number;
}

}  // namespace mqf2vxb::tests
