#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace mqf2vxb::tests {

/// Plays a glTF binary file by the rules of glTF, without any code of the tools that write it.
class GltfPlayer {
public:
    using Row = std::vector<double>;
    using Matrix = std::array<double, 16>;  ///< row by row

    explicit GltfPlayer(const std::string& glb);

    [[nodiscard]] const nlohmann::json& document() const { return document_; }
    /// The bytes of a buffer view.
    [[nodiscard]] std::string bytes(std::size_t view) const;
    /// The elements of an accessor; normalised ones between 0 and 1.
    [[nodiscard]] std::vector<Row> rows(std::size_t accessor) const;

    /// The places of all nodes of the scene, at rest or at a time of an animation.
    [[nodiscard]] std::vector<Matrix> places(std::optional<std::size_t> animation = {},
                                             double seconds = 0) const;

    /// A primitive as a node shows it.
    struct Drawn {
        std::size_t node = 0;
        nlohmann::json primitive;
        std::vector<std::size_t> corners;  ///< three vertices a triangle, counterclockwise
        std::vector<Row> places;           ///< of the vertices, in the scene
        std::vector<Row> normals;          ///< in the scene, of length 1
        std::vector<Row> texels;
        std::vector<Row> colours;
    };
    [[nodiscard]] std::vector<Drawn> drawn(const std::vector<Matrix>& places) const;

private:
    [[nodiscard]] Row sampled(const nlohmann::json& sampler, double seconds, bool turns) const;
    void place(std::size_t node, const Matrix& parent, const std::vector<nlohmann::json>& nodes,
               std::vector<Matrix>& places) const;

    nlohmann::json document_;
    std::string buffer_;
};

/// What becomes of a point.
GltfPlayer::Row moved(const GltfPlayer::Matrix& matrix, const GltfPlayer::Row& point);

}  // namespace mqf2vxb::tests
