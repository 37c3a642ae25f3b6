#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "model/model.h"
#include "run/convert.h"
#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/trace.h"

namespace vxbtool::lint {

/// The files of each part of a model: numbers among a trace's readings.
struct PartFiles {
    std::size_t first = 0;
    std::size_t end = 0;
};
using FilesOfParts = std::array<PartFiles, mqf2vxb::modelParts.size()>;

/// Where the records of a model stand in its text files. The readers take them in the order of the
/// tables, one line or a fixed number of tokens each. Good for the files that were read to their ends.
class SourceMap {
public:
    SourceMap(const Trace& trace, const FilesOfParts& parts, const mqf2vxb::Model& model);

    // Files; null when the model has none.
    const TracedFile* mqf = nullptr;
    const TracedFile* geo = nullptr;
    const TracedFile* srf = nullptr;
    const TracedFile* bnd = nullptr;
    const TracedFile* axs = nullptr;
    const TracedFile* frm = nullptr;
    const TracedFile* sqx = nullptr;
    std::vector<const TracedFile*> motions;  ///< by slot; null where an earlier slot has the same

    [[nodiscard]] SourcePlace image(std::size_t slot) const;
    // A word of a line of the GEO file.
    [[nodiscard]] SourcePlace vertex(std::size_t number, std::size_t word = 0) const {
        return geoWord(0, number, word);
    }
    [[nodiscard]] SourcePlace normal(std::size_t number, std::size_t word = 0) const {
        return geoWord(vertices_, number, word);
    }
    [[nodiscard]] SourcePlace polygon(std::size_t number, std::size_t word = 0) const {
        return geoWord(vertices_ + normals_, number, word);
    }
    /// A word of an SRF line, by positions from 0.
    [[nodiscard]] SourcePlace material(std::size_t line, std::size_t word) const {
        return wordPlace(*srf, srf->lines[linesBeforeRecords + line], word);
    }
    [[nodiscard]] SourcePlace pivot(std::size_t index) const {
        return wordPlace(*axs, axs->lines[linesBeforeRecords + index], 0);
    }
    /// One of the 16 values of a coordinate.
    [[nodiscard]] const TracedToken& coordinate(std::size_t index, std::size_t value) const {
        return frm->tokens[frmTokensBefore + coordinateTokens * index + value];
    }
    /// The first of the tokens that assign vertices or objects to coordinates.
    [[nodiscard]] std::size_t firstAssignment() const {
        return frmTokensBefore + coordinateTokens * coordinates_;
    }

    /// The ID line and the count line.
    static constexpr std::size_t linesBeforeRecords = 2;
    /// Matrix, translation, extra values and parent.
    static constexpr std::size_t coordinateTokens = 16;

private:
    /// The name of the group file, and the number of coordinates.
    static constexpr std::size_t frmTokensBefore = 2;

    [[nodiscard]] SourcePlace geoWord(std::size_t section, std::size_t number,
                                      std::size_t word) const {
        return wordPlace(*geo, geo->lines[linesBeforeRecords + section + number], word);
    }

    std::vector<std::size_t> imageOffsets_;
    std::size_t vertices_;
    std::size_t normals_;
    std::size_t coordinates_;
};

}  // namespace vxbtool::lint
