#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using mqf2vxb::fuzz::Target;
    static const Target target =
        *std::ranges::find(mqf2vxb::fuzz::targets(), std::string_view(FUZZ_TARGET), &Target::name);
    target.run({reinterpret_cast<const char*>(data), size});
    return 0;
}
