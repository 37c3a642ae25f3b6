#include "vxbtool/import/unescaped.h"

#include <cctype>

namespace vxbtool::importing {

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() &&
            std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0) {
            result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

}  // namespace vxbtool::importing
