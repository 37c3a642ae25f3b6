#include "vxbtool/view/page_template.h"

#ifdef VXBTOOL_PAGE

// The file as it is: a literal of its size takes compilers long.
asm(".pushsection .rodata\n"
    ".global vxbtoolPage\n"
    ".global vxbtoolPageEnd\n"
    "vxbtoolPage: .incbin \"" VXBTOOL_PAGE "\"\n"
    "vxbtoolPageEnd: .byte 0\n"
    ".popsection\n");

extern "C" {
extern const char vxbtoolPage[];
extern const char vxbtoolPageEnd[];
}

namespace vxbtool::view {

std::optional<std::string_view> pageTemplate() {
    return std::string_view(vxbtoolPage, vxbtoolPageEnd);
}

}  // namespace vxbtool::view

#else

namespace vxbtool::view {

std::optional<std::string_view> pageTemplate() { return std::nullopt; }

}  // namespace vxbtool::view

#endif
