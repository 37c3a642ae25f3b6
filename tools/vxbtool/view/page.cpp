#include "vxbtool/view/page.h"

#include <stdexcept>

#include "vxbtool/shared/base64.h"

namespace vxbtool::view {
namespace {

/// What stands before a mark of the page. The rest begins behind the mark then.
std::string_view upTo(std::string_view mark, std::string_view& rest) {
    const std::size_t place = rest.find(mark);
    if (place == std::string_view::npos) {
        throw std::logic_error("the page has no place for the model");
    }
    const std::string_view before = rest.substr(0, place);
    rest.remove_prefix(place + mark.size());
    return before;
}

/// JSON that holds no "<", so that no end of an element is in it. Bytes that are not UTF-8 are
/// replaced.
std::string embedded(const Json& data) {
    const std::string text = data.dump(-1, ' ', false, Json::error_handler_t::replace);
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (c == '<') {
            result += "\\u003c";
        } else {
            result += c;
        }
    }
    return result;
}

}  // namespace

std::string filledPage(std::string_view pageTemplate, const Json& data, std::string_view glb) {
    std::string page(upTo("@MODEL_DATA@", pageTemplate));
    page += embedded(data);
    page += upTo("@MODEL_GLB@", pageTemplate);
    page += base64(glb);
    page += pageTemplate;
    return page;
}

}  // namespace vxbtool::view
