#include <cstdint>
#include <limits>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/seeded_hash.h"
#include "text/scan.h"
#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

// Values of a coordinate among its tokens.
constexpr std::size_t matrixEnd = 9;
constexpr std::size_t extraStart = 12;
constexpr std::size_t parentValue = 15;

SourcePlace placeOf(const TracedFile& file, const TracedToken& token) {
    return {&file, token.offset};
}

/// An assignment line of the FRM file or a group of the SQX file: two words, of which the second
/// is a number, and then items or ranges.
struct NamedList {
    const TracedToken* name;
    std::vector<const TracedToken*> items;
};

std::vector<NamedList> namedLists(const TracedFile& file, std::size_t first) {
    std::vector<NamedList> lists;
    for (std::size_t i = first; i + 1 < file.tokens.size();) {
        lists.push_back({&file.tokens[i], {}});
        i += 2;
        while (i < file.tokens.size() && file.tokens[i].kind != TokenKind::word) {
            lists.back().items.push_back(&file.tokens[i++]);
        }
    }
    return lists;
}

/// The first vertex of a range that `named` holds true for already, if any; all are true then.
template <class IsNamed>
std::int32_t firstNamed(const TracedToken& range, IsNamed isNamed) {
    std::int32_t first = -1;
    for (std::int64_t v = range.value; v <= range.last; ++v) {
        if (isNamed(static_cast<std::size_t>(v)) && first < 0) {
            first = static_cast<std::int32_t>(v);
        }
    }
    return first;
}

class HierarchyCheck {
public:
    HierarchyCheck(const LintedModel& linted, Findings& findings)
        : model_(linted.model),
          source_(linted.source),
          findings_(findings),
          vertexNamed_(model_.vertices.size()) {}

    void check() {
        findUse();
        if (source_.frm != nullptr) {
            checkCoordinates();
            checkLoops();
            const std::vector<NamedList> assignments =
                namedLists(*source_.frm, source_.firstAssignment());
            if (source_.sqx != nullptr) {
                checkGroups(assignments);
            } else {
                checkAssignments(assignments);
            }
            checkVertices();
        }
        for (std::size_t i = 0; i < model_.pivots.size(); ++i) {
            const std::int32_t coordinate = model_.pivots[i].coord;
            if (!coordinatesWithVertices_.contains(coordinate)) {
                findings_.add(kind::pivotUnused, source_.pivot(i),
                              fmt::arg("coordinate", coordinate));
            }
        }
    }

private:
    void findUse() {
        std::unordered_set<std::int32_t> lists;
        for (const VertexRecord& vertex : model_.vertices) {
            if (lists.insert(static_cast<std::int32_t>(vertex.cno)).second) {
                for (const std::int32_t coordinate : model_.coordinateLists.entries(vertex.cno)) {
                    coordinatesWithVertices_.insert(coordinate);
                }
            }
        }
    }

    void checkCoordinates() {
        std::vector<bool> used(model_.coordinates.size());
        const auto use = [&](std::int32_t coordinate) {
            if (static_cast<std::size_t>(coordinate) < used.size()) {
                used[static_cast<std::size_t>(coordinate)] = true;
            }
        };
        for (const std::int32_t coordinate : coordinatesWithVertices_) {
            use(coordinate);
        }
        for (const MotionRecord& motion : model_.motions) {
            for (const AnimationIndexRecord& index : motion.indexTable) {
                use(index.coord);
            }
        }
        for (std::size_t c = 0; c < used.size(); ++c) {
            const std::int32_t parent = model_.coordinates[c].parent;
            if (static_cast<std::size_t>(parent) != c) {
                use(parent);
            }
        }
        for (std::size_t c = 0; c < used.size(); ++c) {
            if (!used[c]) {
                findings_.add(kind::coordinateUnused, valuePlace(c, 0), fmt::arg("coordinate", c));
            }
            checkSixteen(c);
            for (std::size_t value = 0; value < parentValue; ++value) {
                if (value < matrixEnd || value >= extraStart) {
                    checkValue(source_.coordinate(c, value));
                }
            }
        }
    }

    /// The parent takes the rest of its line. Numbers behind it are those of another coordinate, or
    /// one too many.
    void checkSixteen(std::size_t coordinate) {
        const TracedToken& parent = source_.coordinate(coordinate, parentValue);
        const std::size_t next = parent.rest.find_first_not_of(" \t");
        if (next != std::string::npos &&
            (parent.rest[next] == '-' || mqf2vxb::isDigit(parent.rest[next]))) {
            findings_.add(kind::valuesSlide, placeOf(*source_.frm, parent),
                          fmt::arg("coordinate", coordinate));
        }
    }

    void checkValue(const TracedToken& token) {
        const auto written = static_cast<std::int16_t>(token.value);
        if (written != token.value) {
            findings_.add(kind::valueCut, placeOf(*source_.frm, token),
                          fmt::arg("value", token.value), fmt::arg("written", written));
        }
    }

    /// Walks from every coordinate up to a root or to one that an earlier walk has passed.
    void checkLoops() {
        constexpr std::size_t never = std::numeric_limits<std::size_t>::max();
        std::vector<std::size_t> walkOf(model_.coordinates.size(), never);
        for (std::size_t walk = 0; walk < walkOf.size(); ++walk) {
            std::size_t c = walk;
            while (walkOf[c] == never) {
                walkOf[c] = walk;
                const auto parent = static_cast<std::size_t>(model_.coordinates[c].parent);
                if (parent != c && walkOf[parent] == walk) {
                    findings_.add(kind::coordinateLoop, valuePlace(c, parentValue),
                                  fmt::arg("coordinate", c));
                }
                c = parent;
            }
        }
    }

    void checkAssignments(const std::vector<NamedList>& assignments) {
        std::vector<std::int32_t> latest(vertexNamed_.size(), -1);
        for (const NamedList& assignment : assignments) {
            const std::int32_t coordinate = assignment.name->value;
            for (const TracedToken* range : assignment.items) {
                const std::int32_t again = firstNamed(*range, [&](std::size_t v) {
                    vertexNamed_[v] = true;
                    return std::exchange(latest[v], coordinate) == coordinate;
                });
                if (again >= 0) {
                    findings_.add(kind::vertexAgain, placeOf(*source_.frm, *range),
                                  fmt::arg("vertex", again), fmt::arg("coordinate", coordinate));
                }
            }
        }
    }

    void checkGroups(const std::vector<NamedList>& assignments) {
        const std::vector<NamedList> groups = namedLists(*source_.sqx, 1);
        std::unordered_set<std::string, SeededHash> groupNames;
        for (const NamedList& group : groups) {
            groupNames.insert(group.name->text);
            for (const TracedToken* range : group.items) {
                const std::int32_t again = firstNamed(*range, [&](std::size_t v) {
                    const bool named = vertexNamed_[v];
                    vertexNamed_[v] = true;
                    return named;
                });
                if (again >= 0) {
                    findings_.add(kind::vertexRegrouped, placeOf(*source_.sqx, *range),
                                  fmt::arg("vertex", again));
                }
            }
        }

        std::unordered_map<std::int32_t, const NamedList*> latest;
        for (const NamedList& assignment : assignments) {
            const NamedList*& known = latest[assignment.name->value];
            if (known != nullptr) {
                findings_.add(kind::objectsReplaced, placeOf(*source_.frm, *known->name),
                              fmt::arg("coordinate", assignment.name->value));
            }
            known = &assignment;
        }
        std::unordered_set<std::string, SeededHash> carried;
        for (const auto& [coordinate, assignment] : latest) {
            for (const TracedToken* object : assignment->items) {
                carried.insert(object->text);
                if (!groupNames.contains(object->text)) {
                    findings_.add(kind::objectUnknown, placeOf(*source_.frm, *object),
                                  fmt::arg("name", object->text));
                }
            }
        }
        for (const NamedList& group : groups) {
            if (!carried.contains(group.name->text)) {
                findings_.add(kind::groupUnused, placeOf(*source_.sqx, *group.name),
                              fmt::arg("name", group.name->text));
            }
        }
    }

    void checkVertices() {
        for (std::size_t v = 0; v < vertexNamed_.size(); ++v) {
            if (!vertexNamed_[v]) {
                findings_.add(kind::vertexUnnamed, source_.vertex(v), fmt::arg("vertex", v));
            }
        }
    }

    [[nodiscard]] SourcePlace valuePlace(std::size_t coordinate, std::size_t value) const {
        return placeOf(*source_.frm, source_.coordinate(coordinate, value));
    }

    const Model& model_;
    const SourceMap& source_;
    Findings& findings_;
    std::vector<bool> vertexNamed_;
    std::unordered_set<std::int32_t> coordinatesWithVertices_;
};

}  // namespace

void checkHierarchy(const LintedModel& linted, Findings& findings) {
    HierarchyCheck(linted, findings).check();
}

}  // namespace vxbtool::lint
