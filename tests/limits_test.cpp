#include <gtest/gtest.h>

#include "base/diagnostics.h"
#include "support/memory_files.h"
#include "vxb/vxb_reader.h"

namespace mqf2vxb::tests {
namespace {

/// What the format holds of one thing: a model with the most of it converts, and one with one more
/// is refused.
struct Limit {
    const char* what;
    std::size_t most;
    ModelFiles (*model)(std::size_t number);
};

std::string hierarchy(std::size_t coordinates) {
    return "=NULL;" + std::to_string(coordinates) + ";" +
           repeated(coordinates, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0;");
}

ModelFiles motion(const std::string& clp) {
    ModelFiles model;
    model.frm = hierarchy(1);
    model.clp = {"COORDINATE;" + clp};
    return model;
}

ModelFiles triangles(std::size_t vertices, std::size_t normals, std::size_t polygons,
                     const std::string& polygon, const std::string& material) {
    ModelFiles model;
    model.geo = std::to_string(vertices) + " " + std::to_string(normals) + " " +
                std::to_string(polygons) + ";" + repeated(vertices + normals, "0;") +
                repeated(polygons, "0 0 0 " + polygon + ";");
    model.srf = "1;0-" + std::to_string(polygons - 1) + " 0 F " + material;
    return model;
}

ModelFiles imagesOfOneType(std::size_t number, bool clut) {
    ModelFiles model;
    model.images.assign(number, image(clut ? 8 : 0, {0, 0}, clut ? Words{0, 0} : Words{}));
    return model;
}

std::string hexOf(std::size_t number) { return formatText("0x%x", static_cast<unsigned>(number)); }

const Limit limits[] = {
    {"vertex index", 65535,
     [](std::size_t n) { return triangles(n + 1, 0, 1, std::to_string(n) + " 0 0", "C 0 0 0"); }},
    {"normal index", 65535,
     [](std::size_t n) { return triangles(1, n + 1, 1, "0 0 " + std::to_string(n), "C 0 0 0"); }},
    {"colour component", 255,
     [](std::size_t n) { return triangles(1, 0, 1, "0", "C 1 2 " + std::to_string(n)); }},
    {"polygons of a type", 32767, [](std::size_t n) { return triangles(1, 0, n, "0", "C 0 0 0"); }},
    {"strips of a type", 32767,
     [](std::size_t n) {
         ModelFiles model = triangles(1, 0, 2 * n, "0", "C 0 0 0");
         model.bnd = std::to_string(n) + ";";
         for (std::size_t i = 0; i < n; ++i) {
             model.bnd += "2 " + std::to_string(2 * i) + " " + std::to_string(2 * i + 1) + ";";
         }
         return model;
     }},
    {"images with a lookup table", 10922, [](std::size_t n) { return imagesOfOneType(n, true); }},
    {"images without", 21844, [](std::size_t n) { return imagesOfOneType(n, false); }},
    {"animated coordinate", 3276,
     [](std::size_t n) {
         ModelFiles model = motion("1;" + std::to_string(n) + " 0 a;TYPE ps0r0t0");
         model.frm = hierarchy(3277);
         return model;
     }},
    {"animated coordinates in 65535 words", 10922,
     [](std::size_t n) {
         return motion(std::to_string(n) + ";" + repeated(n, "0 0 a;") + "TYPE ps0r0t0");
     }},
    {"sequence headers", 32767,
     [](std::size_t n) {
         return motion("1;0 " + std::to_string(n) + " a;" + repeated(n, "START a 0x0;") +
                       "TYPE ps0r0t0");
     }},
    {"number of a SEQ line", 255,
     [](std::size_t n) {
         return motion("0;SEQ " + std::to_string(n) + " ps0r0t1 0;TYPE ps0r0t1;1 2 3");
     }},
    {"first number of a GOTO line", 127,
     [](std::size_t n) { return motion("0;a;GOTO a " + hexOf(n) + " 0x0;TYPE ps0r0t0"); }},
    {"second number of a GOTO line", 127,
     [](std::size_t n) { return motion("0;a;GOTO a 0x0 " + hexOf(n) + ";TYPE ps0r0t0"); }},
    {"number of an END line", 127,
     [](std::size_t n) { return motion("0;END " + hexOf(n) + ";TYPE ps0r0t0"); }},
    {"offset of a key frame", 65535,
     [](std::size_t n) {
         return motion("0;SEQ 0 ps0r0t0 " + std::to_string(n) + ";TYPE ps0r0t0;" +
                       repeated(n + 1, "1;"));
     }},
    {"step that a jump names", 65535,
     [](std::size_t n) {
         return motion("0;" + repeated(n - 1, "END 0x0;") +
                       "GOTO a 0x0 0x0;a;END 0x0;TYPE ps0r0t0");
     }},
    {"step that a coordinate starts with", 65535,
     [](std::size_t n) {
         return motion("1;0 0 a;" + repeated(n, "END 0x0;") + "a;END 0x0;TYPE ps0r0t0");
     }},
    {"pivots of 8192 vertices", 8192,
     [](std::size_t n) {
         ModelFiles model = triangles(8192, 0, 1, "0", "C 0 0 0");
         model.frm = hierarchy(1) + "0 8192 0-8191;";
         model.axs = std::to_string(n) + ";" + repeated(n, "0 0 0 0;");
         return model;
     }},
    {"times that 65536 vertices are named", 256,
     [](std::size_t n) {
         ModelFiles model = triangles(65536, 0, 1, "0", "C 0 0 0");
         model.frm =
             hierarchy(1) + "0 " + std::to_string(65536 * n) + repeated(n, " 0-65535") + ";";
         return model;
     }},
    // Ten coordinates in which 1024 vertices lie or do not, in all ways, and n in which all lie.
    {"coordinates that make 1024 lists longer", 1023,
     [](std::size_t n) {
         ModelFiles model = triangles(1024, 0, 1, "0", "C 0 0 0");
         model.frm = hierarchy(10 + n);
         for (std::size_t bit = 0; bit < 10; ++bit) {
             model.frm += std::to_string(bit) + " 512";
             for (std::size_t i = 0; i < 1024; i += std::size_t{2} << bit) {
                 const std::size_t first = i + (std::size_t{1} << bit);
                 const std::size_t last = first + (std::size_t{1} << bit) - 1;
                 model.frm += " " + std::to_string(first) + "-" + std::to_string(last);
             }
             model.frm += ";";
         }
         for (std::size_t i = 0; i < n; ++i) {
             model.frm += std::to_string(10 + i) + " 1024 0-1023;";
         }
         return model;
     }},
};

TEST(Limits, TheMostConvertsAndOneMoreIsRefused) {
    for (const Limit& limit : limits) {
        SCOPED_TRACE(limit.what);
        const Conversion most = convertFiles(limit.model(limit.most));
        ASSERT_EQ(most.report, "");
        const VxbFile file = readVxb(bytesOf(most.words()));
        EXPECT_EQ(file.findings.count(Severity::error), 0U) << file.findings.kept()[0].line();
        const Conversion more = convertFiles(limit.model(limit.most + 1));
        EXPECT_EQ(more.report.substr(0, 19), "\nNot correct data!\n");
        EXPECT_TRUE(more.outputs.empty());
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
