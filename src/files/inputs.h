#pragma once

#include <map>
#include <string>
#include <vector>

#include "files/input_files.h"
#include "files/input_observer.h"

namespace mqf2vxb {

/// The longest name, word or label in characters, on the command line and in files.
inline constexpr std::size_t longestName = 255;

/// The most characters that a text file's line comes back with, its line feed included.
inline constexpr std::size_t longestLine = 255;

/// The input side of one conversion: opens files, reports those that cannot be opened, and keeps
/// what passes from one text file to the next.
class Inputs {
public:
    explicit Inputs(InputFiles& files) : Inputs(files, nullptr) {}
    /// The observer sees everything that is read; it outlives the inputs.
    Inputs(InputFiles& files, InputObserver& observer) : Inputs(files, &observer) {}

    /// Reads a whole file; one that cannot be opened is reported.
    [[nodiscard]] FileContents open(const std::string& name);
    /// At least the first `most` bytes of a file. When there is an observer, all bytes, which files
    /// of the same name share.
    [[nodiscard]] FileStart openStart(const std::string& name, std::size_t most);
    /// Every file opened so far, in order.
    [[nodiscard]] const std::vector<std::string>& names() const { return names_; }
    /// Null when there is none.
    [[nodiscard]] InputObserver* observer() const { return observer_; }

    /// The text line read last, with its line feed when it had one. A text file that is empty
    /// leaves here what the file before it left. It has room for every line, so that keeping one
    /// needs no memory that could be missing.
    std::string lineBuffer;

private:
    Inputs(InputFiles& files, InputObserver* observer) : files_(files), observer_(observer) {
        lineBuffer.reserve(longestLine);
    }

    InputFiles& files_;
    InputObserver* observer_;
    std::vector<std::string> names_;
    std::map<std::string, FileContents> shared_;  // by their names; only with an observer
};

}  // namespace mqf2vxb
