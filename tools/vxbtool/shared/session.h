#pragma once

#include <cstdint>

namespace CLI {
class App;  // its header takes long to compile
}  // namespace CLI

namespace vxbtool {

/// What the program ends with. Usage errors are thrown as CLI::Error, from callbacks too.
enum class ExitStatus : std::uint8_t { good = 0, badInput = 1, badUsage = 2 };

/// What a subcommand leaves behind for main().
struct Session {
    ExitStatus status = ExitStatus::good;
};

}  // namespace vxbtool
