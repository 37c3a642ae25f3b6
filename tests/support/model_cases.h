#pragma once

#include <utility>

#include "support/memory_files.h"

namespace mqf2vxb::tests {

/// A model and what becomes of it, as a file of cases tells it.
struct ModelCase {
    std::string name;
    Files files;
    RunOptions options;
    std::string report;   ///< as reportLine() shows it; empty for a model that converts
    std::string created;  ///< output files that stay behind after a report
    /// Words by the places where they stand, for wordsAt().
    std::vector<std::pair<std::string, Words>> words;
};

/// Reads the cases of a file of the folder data/cases. A case begins with "=" and perhaps a name, and goes on
/// with "key: value" lines; lines that begin with blanks belong to the value before, and those
/// before the first case belong to every case. ";" is a line end, and "<3*text%;>" stands for
/// three times the text with "%" counting from 0. The keys are
///   geo, srf, axs, frm, bnd, sqx, clp  text behind the ID line; more "clp" make more motions
///   image      flag | words of the pixel block | words of the CLUT block
///   file NAME  a whole file; "file NAME words" gives it in words
///   scale, no images
///   report, created, and the places of words that wordsAt() knows
std::vector<ModelCase> readCases(const std::string& name);

/// The words of a VXB file at a place: "words" all of them, "packets" those of the packets of a
/// model without hierarchy, "at A B" those from offset A up to offset B, "from X" and "from X to Y"
/// those between two comments of the hex text.
Words wordsAt(const Conversion& done, const std::string& place);

/// A report as one line, with ";" for its line ends and "?" for what the machine decides: addresses
/// and sizes of records.
std::string reportLine(const std::string& report);

}  // namespace mqf2vxb::tests
