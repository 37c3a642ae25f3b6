#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "base/diagnostics.h"
#include "support/test_folder.h"
#include "vxbtool/convert/depfile.h"

namespace mqf2vxb::tests {
namespace {

using testing::HasSubstr;

bool canBeHeld(const std::string& name) {
    try {
        return !vxbtool::depfileText("out", std::array{name}).empty();
    } catch (const Report&) {
        return false;
    }
}

TEST(Depfile, RefusesNamesThatAreSyntax) {
    std::string refused;
    for (char c = ' '; c <= '~'; ++c) {
        refused += canBeHeld(std::string("a") + c + "b") ? "" : std::string(1, c);
    }
    EXPECT_EQ(refused, R"("%&'*;<=>?[^`|)");
    for (const char* const name :
         {"a\nb", "a\tb", "a ", "a:", "a\\", "a\\:b", "a\\#b", ".PHONY", ".c.o", "~root", "lib(a)",
          "a=b;touch${IFS}x", "\x7f", R"(a\$b)"}) {
        EXPECT_FALSE(canBeHeld(name)) << name;
    }
}

TEST(Depfile, IsReadAsItIsMeantByMakeAndNinja) {
    std::vector<std::string> names{"a\\ b", "a\\\\  b", "c:\\d", "lib(a).geo",
                                   "d/.x",  "$(a).b",   "${b}",  "é"};
    for (char c = ' '; c <= '~'; ++c) {
        for (const std::string& name :
             {std::string("a") + c + "b", c + std::string("b"), std::string("a") + c}) {
            if (canBeHeld(name) && c != '/') {
                names.push_back(name);
            }
        }
    }
    // One output for each name, which is newer than the name's file at first.
    const TestFolder folder;
    std::filesystem::create_directory(folder.path() / "d");
    std::string make = "all:\n";
    std::string ninja =
        "rule copy\n  command = cp $out.dep $out.d && touch $out\n  depfile = $out.d\n  deps = gcc\n";
    std::string wanted;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string output = "o" + std::to_string(i);
        folder.write(names[i], "");
        folder.write(output + ".dep", vxbtool::depfileText(output, std::array{names[i]}));
        make += "all: " + output + "\n" + output + ":\n\t@echo " + output + "\ninclude " + output +
                ".dep\n";
        ninja += "build " + output + ": copy\n";
        wanted += output + "\n";
    }
    folder.write("Makefile", make);
    folder.write("build.ninja", ninja);

    const auto touchOutputs = [&](const std::string& when) {
        folder.run("touch -d '" + when + "' $(seq -f o%.0f 0 " + std::to_string(names.size() - 1) +
                   ")");
    };
    const auto runMake = [&] { return folder.run("make -rs | grep -v Nothing").output; };
    folder.run("touch -d '2 hours ago' -- * d/.x");
    touchOutputs("1 hour ago");
    EXPECT_EQ(runMake(), "");
    touchOutputs("3 hours ago");
    EXPECT_EQ(runMake(), wanted);

    folder.run("ninja");
    const std::string deps = folder.run("ninja -t deps").output;
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_THAT(deps, HasSubstr("o" + std::to_string(i) + ": #deps 1,")) << names[i];
        EXPECT_THAT(deps, HasSubstr("\n    " + names[i] + "\n"));
    }

    // Without the files the empty rules let Make go on.
    for (const std::string& name : names) {
        std::filesystem::remove(folder.path() / name);
    }
    EXPECT_EQ(runMake(), wanted);
}

}  // namespace
}  // namespace mqf2vxb::tests
