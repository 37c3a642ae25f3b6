#pragma once

#include <stdexcept>

namespace vxbtool::render {

/// A picture that cannot be made; what() has one line or more, without the last one's end.
class RenderFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace vxbtool::render
