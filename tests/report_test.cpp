#include <gtest/gtest.h>

#include <regex>

#include "animation/animation_section.h"
#include "driver/diagnostics.h"
#include "driver/output_word_stream.h"
#include "output/output_layout.h"
#include "output/sizes.h"
#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

/// What a case makes of the plain model: new text for the components with these names ("geo",
/// "srf", ...), or whole files ("m.mqf").
using Changes = std::vector<std::pair<std::string, std::string>>;

struct Case {
    Changes changes;
    std::string report;
};

constexpr const char* triangle = "3 1 1;0;1;2;0 0 1;0 0 1 2 0 0 0 0 0";
constexpr const char* oneRoot = "1;0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0;";

/// The plain model is one triangle.
Files changed(const Changes& changes) {
    ModelFiles model;
    model.geo = triangle;
    model.srf = "1;0 0 F C 1 2 3";
    const std::map<std::string, std::string*> components{{"geo", &model.geo}, {"srf", &model.srf},
                                                         {"axs", &model.axs}, {"frm", &model.frm},
                                                         {"sqx", &model.sqx}, {"bnd", &model.bnd}};
    Files whole;
    for (const auto& [name, text] : changes) {
        if (name == "clp") {
            model.clp.push_back(text);
        } else if (name == "image") {
            model.images.push_back(text);
        } else if (const auto component = components.find(name); component != components.end()) {
            *component->second = text;
        } else {
            whole[name] = text;
        }
    }
    Files files = model.files();
    for (const auto& [name, text] : whole) {
        files[name] = text;
    }
    return files;
}

/// The text with the addresses, which differ from run to run, as "?".
std::string masked(const std::string& report) {
    return std::regex_replace(report, std::regex("(address *):0x[0-9a-f]{8}"), "$1:?");
}

std::string area(const std::string& table, std::size_t size, std::size_t number) {
    return "\nThere isn't the area!\n\n-- " + table +
           " malloc --\nSize            :" + std::to_string(size) +
           " byte\nNumber          :" + std::to_string(number) +
           "\nTop address     :?\n\nYour set address:?\n";
}

std::string aboutFile(const std::string& message, const std::string& name) {
    return "\n" + message + "\n\nFile Name:" + name + "\n";
}

std::string cannotOpen(const std::string& name) { return aboutFile("Can't open this file!", name); }

/// Converts every case; `outputs` are the files that the conversion creates, empty ones.
void check(const std::vector<Case>& cases, const Files& outputs = {}) {
    for (const Case& c : cases) {
        const Conversion done = convertFiles(changed(c.changes), withHex());
        EXPECT_EQ(masked(done.report), c.report)
            << (c.changes.empty()
                    ? ""
                    : c.changes.back().first + ": " + c.changes.back().second.substr(0, 300));
        EXPECT_EQ(done.outputs, outputs) << c.report;
    }
}

TEST(Reports, FilesThatCannotBeOpenedOrAreOfAnotherKind) {
    std::vector<Case> cases{
        {{{"m.mqf", "@MQF970401\nNTEX=1\nTEX[0]=no.pxl\n"}}, cannotOpen("no.pxl")},
        {{{"m.mqf", "@MQF970401\nNCLP=1\nCLP[0]=no.clp\n"}}, cannotOpen("no.clp")},
        {{{"m.mqf", "@MQF970401\nGEO=\n"}}, cannotOpen("")},
        {{{"frm", "=no.sqx;0"}}, cannotOpen("no.sqx")},
        {{{"frm", "= g.sqx;0"}, {"sqx", "0"}}, cannotOpen("")},
        {{{"m.mqf", ""}}, aboutFile("Format isn't correct!", "m.mqf") + "ID       :"}};
    const std::string mqf = "@MQF970401\n";
    for (const std::string kind : {"GEO", "SRF", "AXS", "FRM", "BND", "CLP", "SQX", "MQF"}) {
        const std::string list = kind == "CLP" ? "NCLP=1\nCLP[0]=x\n" : kind + "=x\n";
        Changes changes{{"m.mqf", mqf + list}};
        if (kind == "SQX") {
            changes = {{"m.mqf", mqf + "FRM=f.frm\n"}, {"f.frm", "@FRM970401\n=x\n0\n"}};
        }
        const std::string name = kind == "MQF" ? "m.mqf" : "x";
        if (kind != "MQF") {
            cases.push_back({changes, cannotOpen("x")});
        }
        changes.emplace_back(name, "@" + kind + "980401\n");
        cases.push_back({changes, aboutFile("This program doesn't support the version!", name) +
                                      "ID       :@" + kind + "980401\n"});
        changes.back().second = "@XYZ970401";
        cases.push_back(
            {changes, aboutFile("Format isn't correct!", name) + "ID       :@XYZ970401"});
    }
    check(cases);
    EXPECT_EQ(convertFiles(Files{}).report, cannotOpen("m.mqf"));
}

TEST(Reports, ModelDescription) {
    const auto refused = [](const std::string& text, int line, const std::string& cause) {
        return Case{{{"m.mqf", "@MQF970401\n" + lines(text)}}, notCorrect("m.mqf", line, cause)};
    };
    const std::string index = "\nPXL file's index is incorrect!\nFile Name:m.mqf\n";
    check({refused("NTEX=-1", 2, "negative number of TEX lines"),
           refused(";NCLP=9;CLP[0]=a", 3, "more CLP lines announced than the file can hold"),
           refused("NTEX=2147483648", 2, "number does not fit 32 bits"),
           refused("NTEX=1;GEO=name", 3, "not of the form TEX[number]=name"),
           refused("NCLP=1;CLP[0] =a", 3, "not of the form CLP[number]=name"),
           refused("NTEX=1;# 345678", 0, "the file ends before its TEX[..] lines"),
           refused("NCLP=2;CLP[0]=a;CLP[0]=bcdefg", 0, "no line names CLP[1]"),
           refused("GEO=" + std::string(252, 'g'), 2, "line longer than 255 characters"),
           refused("NTEX=1;TEX[0]=" + std::string(248, 'g'), 3, "line longer than 255 characters"),
           {{{"m.mqf", "@MQF970401\nNTEX=2\nTEX[2]=a\nTEX[0]=b\n"}}, index},
           {{{"m.mqf", "@MQF970401\nNTEX=1\nTEX[-1]=a\n"}}, index},
           {{{"m.mqf", "@MQF970401\nNCLP=1\nCLP[1]=a\n"}},
            area("CLP Data Base", sizeof(MotionRecord), 1)}});
    const Conversion done =
        convertFiles(changed({{"geo", "1 0 0;# 3;99999999999 0"}, {"m.mqf", ""}}));
    EXPECT_EQ(done.place, "m.mqf:0");
    EXPECT_EQ(convertFiles(changed({{"geo", "1 0 1;# 3;0;0 99999999999 0"}})).place, "g.geo:5");
}

TEST(Reports, Geometry) {
    const auto refused = [](const std::string& geo, int line, const std::string& cause) {
        return Case{{{"geo", geo}}, notCorrect("g.geo", line, cause)};
    };
    const std::string vertices = repeated(65537, "0;");
    check(
        {refused(" ", 0, "the file ends before its counts"),
         refused("-1 0 0", 2, "negative number of vertices"),
         refused("0 -1 0", 2, "negative number of normals"),
         refused("0 0 -2147483648", 2, "negative number of polygons"),
         refused("2147483647 0 0;0", 2, "more vertices announced than the file can hold"),
         refused("0 2 0;0", 2, "more normals announced than the file can hold"),
         refused("0 0 2;0", 2, "more polygons announced than the file can hold"),
         refused("2 0 0;0;#", 0, "the file ends before its last vertex"),
         refused("0 2 0;0;#", 0, "the file ends before its last normal"),
         refused("0 0 2;0;#", 0, "the file ends before its last polygon"),
         refused("0 0 1;123456789", 3, "number does not fit 32 bits"),
         refused("0 0 1;0 0 0 -2147483649", 3, "number does not fit 32 bits"),
         refused("1 0 0;" + std::string(253, ' ') + "1 2 3", 3, "line longer than 255 characters"),
         refused("65537 0 1;" + vertices + "0 0 65536 1", 0,
                 "polygon 0 has the vertex index 65536, and a packet holds 0 to 65535"),
         refused("1 65537 1;0;" + vertices + "0 0 0 0 0 65536", 0,
                 "polygon 0 has the normal index 65536, and a packet holds 0 to 65535"),
         refused("1 0 1;0;0 0 0 0 0 -1", 0,
                 "polygon 0 has the normal index -1, and a packet holds 0 to 65535"),
         {{{"geo", "3 1 1;0;1;2;0;0 0 1 3"}}, area("Vertex Data Base", sizeof(VertexRecord), 3)},
         {{{"geo", "3 1 1;0;1;2;0;0 -1 1 2"}}, area("Vertex Data Base", sizeof(VertexRecord), 3)},
         {{{"geo", "3 1 1;0;1;2;0;0 0 1 2 0 1"}},
          area("Normal Data Base", sizeof(NormalRecord), 1)},
         {{{"geo", "3 1 1;0;1;2;0;0 0 1 2 0 0 0 -1"}, {"srf", "1;0 0 G C 1 2 3"}},
          area("Normal Data Base", sizeof(NormalRecord), 1)},
         {{{"geo", ""}}, "\nThere is not GEOfile\n"}});
}

TEST(Reports, Materials) {
    const auto refused = [](const std::string& srf, int line, const std::string& cause) {
        return Case{{{"srf", srf}}, notCorrect("s.srf", line, cause)};
    };
    check({refused(" ", 0, "the file ends before its count"),
           refused("-1", 2, "negative number of material lines"),
           refused("2;0 0 F C", 2, "more material lines announced than the file can hold"),
           refused("2;0 0 F C;#234567", 0, "the file ends before its last material line"),
           refused("1;0,2-1 0 F C", 3, "range 2-1 runs backwards"),
           refused("1;0, 0 F C", 3, "the polygon list ends with a comma"),
           refused("1;,0 0 F C", 3, "an item of the polygon list does not begin with a digit"),
           refused("1;0- 0 F C", 3, "an item of the polygon list does not begin with a digit"),
           refused("1;0x1 0 F C", 3, "\"x1\" in the polygon list"),
           refused("1;0-4294967295 0 F C", 3, "number does not fit 32 bits"),
           refused("1;0 0 F       ", 3, "fewer than four words"),
           refused("1;0 -1 0 F C", 3, "a blank inside the polygon list"),
           refused("1;0 ,1 0 F C", 3, "a blank inside the polygon list"),
           refused("1;0 x F C 1 2 3", 3, "flag is not a hexadecimal number"),
           refused("1;0 100000000 F C", 3, "number does not fit 32 bits"),
           refused("1;0 0 F C 1 2 2147483648", 3, "number does not fit 32 bits"),
           refused("1;0 0 F C 1" + std::string(250, ' ') + "2 3", 3,
                   "line longer than 255 characters"),
           refused("1;0-16777216 0 F C", 3, "more than 16777216 material records"),
           refused("1;0 0 F T 0", 0, "polygon 0 has texture 0, which the model does not have"),
           refused("1;0 0 F T -1", 0, "polygon 0 has texture -1, which the model does not have"),
           refused("1;0 0 F C 0 256 0", 0,
                   "polygon 0 has the colour component 256, and a packet holds 0 to 255"),
           refused("1;0 0 F G 0 0 0 0 0 0 0 0 -1", 0,
                   "polygon 0 has the colour component -1, and a packet holds 0 to 255"),
           {{{"srf", "1;0-1 0 F C"}}, area("Polygon Data Base", sizeof(PolygonRecord), 1)}});
    std::string polygons = "3 0 32768;0;0;0;" + repeated(32768, "0 0 1 2 0 0 0 0 0;");
    check({{{{"geo", polygons}, {"srf", "1;0-32767 0 F C"}},
            notCorrect("s.srf", 0,
                       "32768 polygons of the type 0x00000008 in one coordinate list, and the "
                       "format holds 32767")}});
}

TEST(Reports, Pivots) {
    const auto refused = [](const std::string& axs, int line, const std::string& cause) {
        return Case{{{"axs", axs}}, notCorrect("a.axs", line, cause)};
    };
    check({refused(" ", 0, "the file ends before its count"),
           refused("-5", 2, "negative number of pivots"),
           refused("2;0", 2, "more pivots announced than the file can hold"),
           refused("1;#", 0, "the file ends before its last pivot"),
           refused("1;99999999999", 3, "number does not fit 32 bits")});
}

TEST(Reports, Coordinates) {
    const auto refused = [](const std::string& frm, int line, const std::string& cause) {
        return Case{{{"frm", frm}}, notCorrect("f.frm", line, cause)};
    };
    const auto assigned = [&](const std::string& text, int line, const std::string& cause) {
        return refused("=NULL;" + std::string(oneRoot) + text, line, cause);
    };
    const std::string incomplete = "the file ends before it is complete";
    const std::string root = "=NULL;" + std::string(oneRoot);
    const std::string zeros = "=NULL;1;0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 ";
    const std::size_t recordSize = sizeof(CoordinateRecord);
    check({refused(" ", 0, "the file ends before a '='"),
           refused("=NULL", 0, incomplete),
           refused("=NULL;-1", 3, "negative number of coordinates"),
           refused("=NULL;2;0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0", 3,
                   "more coordinates announced than the file can hold"),
           refused("=NULL;1;0 0 0" + std::string(40, ' '), 0, incomplete),
           refused("=NULL;1;0 0 0 0 0 0 0 0 0 99999999999 0 0 0 0 0 0", 4,
                   "number does not fit 32 bits"),
           {{{"frm", zeros + "1"}}, area("Coordinate Data Base", recordSize, 1)},
           {{{"frm", zeros + "-1"}}, area("Coordinate Data Base", recordSize, 1)},
           {{{"frm", root + "1 1 0"}}, area("Coordinate Data Base", recordSize, 1)},
           {{{"frm", root + "0 1 3"}}, area("Vertex Data Base", sizeof(VertexRecord), 3)},
           {{{"frm", root + "0 2 2-3"}}, area("Vertex Data Base", sizeof(VertexRecord), 3)},
           assigned("0 -1", 5, "negative number of vertices"),
           assigned("0 1 0-1", 5, "more vertices named than announced"),
           assigned("0 9 2-1", 5, "range 2-1 runs backwards"),
           assigned("0 1 -1", 5, "range without a first number"),
           assigned("0 2147483647 0-2147483647", 5, "more vertices named than announced"),
           assigned("0 16777217 0-16777216", 5, "more than 16777216 vertices named"),
           assigned("0;2147483648", 6, "number does not fit 32 bits"),
           assigned("0 1 " + std::string(256, '0'), 5, "text longer than 255 characters"),
           assigned("0 2 0", 0, incomplete),
           assigned("0", 0, incomplete),
           {{{"frm", "=NULL;0"}, {"f.frm", "@FRM970401\n=NULL #"}},
            notCorrect("f.frm", 0, "the file ends inside a comment")},
           refused("=g.sqx;" + std::string(oneRoot) + "0 -1", 5, "negative number of object names"),
           refused("=g.sqx;" + std::string(oneRoot) + "0 2 a", 5,
                   "more object names announced than the file can hold"),
           refused("=NULL;2;" + repeated(2, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0;") + "0 2 0,1;1 2 0 2",
                   0, "vertex 0 of the shared polygon 0 lies in more than one coordinate: 0 1")});
}

TEST(Reports, Groups) {
    const std::string frm = "=g.sqx;" + std::string(oneRoot) + "0 1 body";
    const auto refused = [&](const std::string& sqx, int line, const std::string& cause) {
        return Case{{{"frm", frm}, {"sqx", sqx}}, notCorrect("g.sqx", line, cause)};
    };
    check({refused("-1", 2, "negative number of groups"),
           refused("2;a 0", 2, "more groups announced than the file can hold"),
           refused("2;aaaaa 0", 0, "the file ends before it is complete"),
           refused("1;a -1", 3, "negative number of vertices"),
           refused("2;body 3 0-2;nobody 1 1", 0,
                   "polygon 0 uses vertex 1 of the group nobody, which no coordinate carries"),
           {{{"frm", frm}, {"sqx", "1;body 1 3"}},
            area("Vertex Data Base", sizeof(VertexRecord), 3)}});
}

TEST(Reports, Meshes) {
    const std::string quad = "3 0 4;0;0;0;" + repeated(4, "0 0 1 2 0;");
    const auto refused = [&](const std::string& bnd, int line, const std::string& cause,
                             const std::string& srf = "1;0-3 0 F C") {
        return Case{{{"geo", quad}, {"srf", srf}, {"bnd", bnd}, {"image", image(0, {0, 0})}},
                    notCorrect("b.bnd", line, cause)};
    };
    const auto unlike = [&](const std::string& first, const std::string& second,
                            const std::string& what) {
        return refused("1;2 0 1", 0,
                       "polygon 1 of mesh 0 has " + what + ", unlike the mesh's first polygon",
                       "2;0 " + first + ";1 " + second);
    };
    check({refused("-1", 2, "negative number of meshes"),
           refused("9;1 0", 2, "more meshes announced than the file can hold"),
           refused("1;-1", 3, "negative number of polygons"),
           refused("1;3 0 1", 3, "more polygons announced than the file can hold"),
           refused("1;3 0     1", 0, "the file ends before it is complete"),
           refused("1;1 2147483648", 3, "number does not fit 32 bits"),
           refused("2;1 0;0", 0, "mesh 1 has no polygons"),
           refused("1;2 0 1", 0, "polygon 2 has a material and is in no mesh"),
           refused("2;2 0 1;2 2 0", 0, "polygon 0 of mesh 1 has a place in mesh 0 too"),
           refused("1;2 1 1", 0, "polygon 1 of mesh 0 has a second place in the mesh"),
           refused("1;2 0 3", 0, "polygon 3 of mesh 0 has no material", "1;0 0 F C;"),
           refused("1;1 0", 0, "polygon 0 of mesh 0 has two materials", "1;0,0 0 F C;"),
           unlike("0 F T 0", "0 F C", "no texture"),
           unlike("0 F W 0", "0 F T 0", "no texture window"),
           unlike("0 F C", "0 F G", "another number of colours"),
           unlike("0 F G", "0 F C", "another number of colours"),
           unlike("1 F G", "1 F C", "another number of colours"),
           unlike("0 F H 0", "0 F T 0", "another number of colours"),
           unlike("0 F W 0", "0 F N 0", "another number of colours"),
           unlike("0 F N 0", "0 F S 0", "another number of colours"),
           unlike("81 F G", "81 F C", "another number of colours"),
           {{{"bnd", "1;1 1"}}, area("Polygon Data Base", sizeof(PolygonRecord), 1)}});
    const std::string two =
        "2;" + repeated(2, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0;") + "0 3 0-2;1 1 3";
    for (const auto& [order, what] :
         {std::pair{"0 1", "different coordinates"}, std::pair{"1 0", "one coordinate"}}) {
        const std::string second(1, order[2]);
        check({{{{"geo", "4 0 2;0;0;0;0;0 0 1 2;0 1 2 3"},
                 {"srf", "1;0,1 0 F C"},
                 {"frm", "=NULL;" + two},
                 {"bnd", "1;2 " + std::string(order)}},
                notCorrect("b.bnd", 0,
                           "polygon " + second + " of mesh 0 has vertices in " + what +
                               ", unlike the first")}});
    }
    check(
        {{{{"geo", "3 0 32768;0;0;0;" + repeated(32768, "0 0 1 2;")},
           {"srf", "1;0-32767 0 F C"},
           {"bnd", "32768;" +
                       [] {
                           std::string text;
                           for (int i = 0; i < 32768; ++i) {
                               text += "1 " + std::to_string(i) + "\n";
                           }
                           return text;
                       }()}},
          notCorrect(
              "b.bnd", 0,
              "32768 meshes of the type 0x00000008 in one coordinate list, and the format holds 32767")}});
}

TEST(Reports, Images) {
    const auto refused = [](const Words& words, const std::string& cause) {
        return Case{{{"image", bytesOf(words)}}, notCorrect("0.pxl", 0, cause)};
    };
    const std::string header = "the file ends before its header is complete";
    check({{{{"image", bytesOf({1, 0})}}, "\n0.pxl isn't PXLformat\n"},
           {{{"image", bytesOf({0x10, 0x0B})}}, "\nYou can't use 24bit PXLfiles(0.pxl)\n"},
           refused({}, header),
           refused({0x10}, header),
           refused({0x10, 8}, "the file ends before the length of its CLUT block"),
           refused({0x10, 0}, "the file ends before the length of its pixel block"),
           refused({0x10, 8, 11, 0, 0}, "the CLUT block is 11 bytes long, shorter than its header"),
           refused({0x10, 0, 0x80000000, 0, 0},
                   "the pixel block is -2147483648 bytes long, shorter than its header"),
           refused({0x10, 8, 16, 0, 0}, "the file ends inside its CLUT block"),
           refused({0x10, 8, 12, 0, 0, 0x7FFFFFFF, 0, 0}, "the file ends inside its pixel block")});
    std::string slots = "@MQF970401\nNTEX=21845\n";
    for (int i = 0; i < 21845; ++i) {
        slots += "TEX[" + std::to_string(i) + "]=x\n";
    }
    check({{{{"m.mqf", slots}, {"x", image(0, {0, 0})}},
            notCorrect(
                "m.mqf", 0,
                "21845 images of one type, in more words than the 65535 that the format holds")}});
}

TEST(Reports, Motions) {
    const std::string none = "COORDINATE;0;";
    const auto refused = [](const std::string& clp, int line, const std::string& cause) {
        return Case{{{"clp", clp}}, notCorrect("0.clp", line, cause)};
    };
    const auto mismatch = [](const std::string& clp, const std::string& what) {
        return Case{{{"clp", clp}}, "\nNot match(" + what + ")\n"};
    };
    const std::string start = "COORDINATE;1;0 1 a;START a ";
    std::string types;
    for (int i = 0; i < 65; ++i) {
        types += "TYPE ps0r0t" + std::to_string(100 + i) + ";";
    }
    check(
        {refused(" ", 0, "the file ends before its target"),
         refused("COORDINATE", 0, "the file ends before its number of coordinates"),
         refused("COORDINATE;-1", 3, "negative number of coordinates"),
         refused("COORDINATE;2;0", 3, "more coordinates announced than the file can hold"),
         refused("COORDINATE;1;#", 0, "the file ends before its coordinates"),
         refused("COORDINATE;1;-1 0 a", 4, "negative coordinate -1"),
         refused("COORDINATE;1;3277 0 a", 4, "coordinate 3277 is above 3276"),
         refused("COORDINATE;1;0 -1 a", 4, "negative number of sequence headers"),
         refused("COORDINATE;1;0 1 a", 4, "more sequence headers announced than the file can hold"),
         refused("COORDINATE;1;0 1 a;#", 0, "the file ends before its sequence headers"),
         refused(start + "0x10000", 5, "number 65536 is above 65535"),
         refused(start + "0x100000000", 5, "number does not fit 32 bits"),
         refused("COORDINATE;0", 0, "the file ends before its first TYPE line"),
         refused(none + "label;END 0x0", 0, "the file ends before its first TYPE line"),
         refused(none + "SEQ 256 ps0r0t0 0", 4, "number 256 is above 255"),
         refused(none + "SEQ -1 ps0r0t0 0", 4, "number 4294967295 is above 255"),
         refused(none + "GOTO a 0x80 0x0", 4, "number 128 is above 127"),
         refused(none + "GOTO a 0x0 0x80", 4, "number 128 is above 127"),
         refused(none + "END 0x80", 4, "number 128 is above 127"),
         refused(none + "a;END 0x0;a;END 0x0;TYPE ps0r0t0", 0, "two steps have the label a"),
         refused(none + "SEQ 0 ps0r0t1 0;TYPE ps0r0t1;1;TYPE ps0r0t1;1", 0,
                 "two TYPE groups have the type 0x03000001 of a SEQ line"),
         refused(none + "SEQ 0 ps0r0t1 1;TYPE ps0r0t1;1", 0,
                 "a SEQ line names key frame 1 of the type 0x03000001, which has 1"),
         refused(none + "SEQ 0 ps0r0t1 -1;TYPE ps0r0t1;1", 0,
                 "a SEQ line names key frame 4294967295 of the type 0x03000001, which has 1"),
         refused(none + "SEQ 0 ps0r0t0 65536;TYPE ps0r0t0;" + repeated(65537, "1;"), 0,
                 "a SEQ line's key frame stands at word 65536, which is above 65535"),
         refused(none + types, 0, "more than 64 key-frame types"),
         refused("COORDINATE;1;0 32768 a;" + repeated(32768, "START a 0x0;") + "TYPE ps0r0t0", 0,
                 "32768 sequence headers in 32774 words, and the format holds 32767 in 65535"),
         refused("COORDINATE;10923;" + repeated(10923, "0 0 a;") + "TYPE ps0r0t0", 0,
                 "10923 coordinates in 65539 words, and the format holds 32767 in 65535"),
         refused("COORDINATE;1;0 0 a;" + repeated(65535, "END 0x0;") + "a;END 0x0;TYPE ps0r0t0", 0,
                 "the step a has the number 65535, which is above 65534"),
         refused(none + repeated(65535, "END 0x0;") + "GOTO a 0x0 0x0;a;END 0x0;TYPE ps0r0t0", 0,
                 "the step a has the number 65536, which is above 65535"),
         mismatch("COORDINATES", "atcheck:COORDINATES"),
         mismatch("COORDINATE;1;0 1 a;STOP b", "seqhcheck:STOP"),
         mismatch(none + "SEQ 0 xs0r0t0 0", "seqcheck:x"),
         mismatch(none + "SEQ", "seqcheck:"),
         mismatch(none + "TYPE Ps0r0t0", "aptcheck:P"),
         mismatch(none + "TYPE ms0r0t1;1", "aptcheck:0x03001001"),
         mismatch(none + "TYPE ps1r1t0;1", "aptcheck:0x03000110")});
    // These are met when the layout is computed: both files exist by then.
    check({mismatch(none + "SEQ 0 ms0r0t0 0;TYPE ps0r0t0", "animmtsize:0x03001000"),
           mismatch(none + "TYPE ps0r0t2", "animmtsize:0x03000002")},
          {{"m.vxb", ""}, {"hex", ""}});
}

TEST(Reports, CodesWithoutPackets) {
    std::vector<Case> cases;
    for (const auto& [kind, srf, code] :
         {std::tuple{"2", "0 F C", "00000000"}, std::tuple{"3", "1 F C", "00040060"},
          std::tuple{"4", "6 G C", "00300004"}, std::tuple{"0", "80 F C", "00000108"},
          std::tuple{"0", "81 F W 0", "00040349"}}) {
        cases.push_back({{{"geo", "3 0 1;0;1;2;" + std::string(kind) + " 0 1 2"},
                          {"srf", "1;0 " + std::string(srf)},
                          {"image", image(0, {0, 0})}},
                         "\nNot match(primtsize:0x" + std::string(code) + ")\n"});
    }
    check(cases, {{"m.vxb", ""}, {"hex", ""}});
}

/// The report that `action` ends with.
template <class Action>
std::string reportOf(Action action) {
    try {
        action();
    } catch (const Report& report) {
        return report.text();
    }
    return {};
}

TEST(Reports, FaultsThatNoInputCauses) {
    MemoryFileSystem files({});
    OutputWordStream stream(files, "m.vxb", nullptr);
    EXPECT_EQ(reportOf([&] { stream.checkPosition(7, "packets"); }),
              "\nLayout fault(packets:0, not 7)\n");
    EXPECT_EQ(reportOf([] { imagetsize(0x02000002, 1); }), "\nNot match(imagetsize:0x02000002)\n");

    Model model;
    model.description.fileName = "m.mqf";
    model.primitives.malprim.allocate(1);
    model.primitives.malprim[0].maltype.resize(1);
    model.primitives.malprim[0].maltype[0].type = 0x17;
    model.primitives.malprim[0].maltype[0].polyNum = 0x0C30C30C;
    model.primitives.malprimh.allocate(1);
    EXPECT_EQ(reportOf([&] { computeLayout(model); }),
              notCorrect("m.mqf", 0, "the output would be larger than 2147483647 words"));
    model.motions.allocate(1);
    model.motions[0].packetTypeTable.allocate(1);
    model.motions[0].packetTypeTable[0].type = 0x03000002;
    OutputLayout layout;
    layout.animationSection = 0;
    layout.complementFunctionTop = 5;
    layout.controlTop = 6;
    layout.matrixTop = 6;
    EXPECT_EQ(reportOf([&] { writeAnimationSection(model, layout, stream); }),
              "\nNot match(anim:0x03000002)\n");
}

TEST(Reports, Outputs) {
    MemoryFileSystem locked(changed({}));
    locked.locked = "m.vxb";
    EXPECT_EQ(convertFiles(locked, withHex()).report, cannotOpen("m.vxb"));
    EXPECT_EQ(locked.outputs, Files{});
    locked.locked = "hex";
    EXPECT_EQ(convertFiles(locked, withHex()).report, cannotOpen("hex"));
    EXPECT_EQ(locked.outputs, (Files{{"m.vxb", ""}}));

    RunOptions options = withHex();
    options.hexName = "m.vxb";
    const auto refused = [&](const Files& files, const std::string& name,
                             const std::string& cause) {
        const Conversion done = convertFiles(files, options);
        EXPECT_EQ(done.report, notCorrect(name, 0, cause));
        EXPECT_EQ(done.outputs, Files{});
    };
    refused(changed({}), "m.vxb", "the hex text is the same file as the output m.vxb");
    options.hexName = "s.srf";
    refused(changed({}), "s.srf", "the output is the same file as the input s.srf");
    refused(changed({{"m.mqf", "@MQF970401\nSRF=m.vxb\n"}, {"m.vxb", "@SRF970401\n0\n"}}), "m.vxb",
            "the output is the same file as the input m.vxb");
}

TEST(Reports, AFullDiskAtEveryByte) {
    const Files files = changed({{"geo", "100 0 1;" + repeated(100, "1;") + "0 0 1 2"}});
    const Conversion whole = convertFiles(files, withHex());
    std::size_t size = 0;
    for (const auto& [name, text] : whole.outputs) {
        size += text.size();
    }
    for (std::size_t room = 0; room <= size; ++room) {
        MemoryFileSystem disk(files);
        disk.room = room;
        const std::string report = convertFiles(disk, withHex()).report;
        const bool vxbFits = room >= whole.outputs.at("m.vxb").size();
        const std::string expected =
            room == size ? "" : aboutFile("Can't write this file!", vxbFits ? "hex" : "m.vxb");
        ASSERT_EQ(report, expected) << room;
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
