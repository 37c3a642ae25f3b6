#include "vxbtool/shared/in_memory.h"

#include <string_view>
#include <utility>

#include "base/out_of_memory.h"
#include "run/convert.h"
#include "writers/model_writer.h"

namespace vxbtool {
namespace {

class TextOfFile final : public mqf2vxb::OutputFile {
public:
    explicit TextOfFile(std::string& text) : text_(text) {}

    [[nodiscard]] bool write(std::string_view bytes) override {
        text_ += bytes;
        return true;
    }
    [[nodiscard]] bool close() override { return true; }

private:
    std::string& text_;
};

}  // namespace

std::optional<mqf2vxb::FileContents> MemoryFiles::read(const std::string& name) {
    const auto found = files.find(name);
    if (found == files.end()) {
        return std::nullopt;
    }
    mqf2vxb::FileContents contents(found->second.size());
    found->second.copy(contents.data(), found->second.size());
    return contents;
}

std::unique_ptr<mqf2vxb::OutputFile> MemoryFiles::create(const std::string& name) {
    std::string& text = files[name];
    text.clear();
    return std::make_unique<TextOfFile>(text);
}

std::string convertInMemory(const std::string& mqfName, const mqf2vxb::RunOptions& options,
                            mqf2vxb::InputFiles& files) {
    MemoryFiles output;
    mqf2vxb::RunOptions toMemory = options;
    toMemory.outputName = "vxb";
    mqf2vxb::withMemory([&] {
        mqf2vxb::Inputs inputs(files);
        mqf2vxb::Model model;
        mqf2vxb::readModel(mqfName, inputs, model);
        mqf2vxb::organiseModel(toMemory, model);
        mqf2vxb::writeModel(model, toMemory, files, output);
    });
    return std::move(output.files["vxb"]);
}

}  // namespace vxbtool
