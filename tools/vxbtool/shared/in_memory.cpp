#include "vxbtool/shared/in_memory.h"

#include <memory>
#include <string_view>

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

class OneTextOutput final : public mqf2vxb::OutputFiles {
public:
    [[nodiscard]] std::unique_ptr<mqf2vxb::OutputFile>
    create(const std::string& /*name*/) override {
        return std::make_unique<TextOfFile>(text);
    }

    std::string text;
};

}  // namespace

std::string convertInMemory(const std::string& mqfName, const mqf2vxb::RunOptions& options,
                            mqf2vxb::InputFiles& files) {
    OneTextOutput output;
    mqf2vxb::withMemory([&] {
        mqf2vxb::Inputs inputs(files);
        mqf2vxb::Model model;
        mqf2vxb::readModel(mqfName, inputs, model);
        mqf2vxb::organiseModel(options, model);
        mqf2vxb::writeModel(model, options, files, output);
    });
    return std::move(output.text);
}

}  // namespace vxbtool
