#include "support/gltf_player.h"

#include <cmath>
#include <cstring>
#include <stdexcept>

namespace mqf2vxb::tests {
namespace {

using nlohmann::json;
using Row = GltfPlayer::Row;
using Matrix = GltfPlayer::Matrix;

constexpr Matrix unchanged{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

template <class Number>
Number numberAt(const std::string& bytes, std::size_t offset) {
    Number number{};
    if (offset + sizeof number > bytes.size()) {
        throw std::out_of_range("the file ends before its numbers do");
    }
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

double componentAt(const std::string& bytes, std::size_t offset, int type, bool normalised) {
    switch (type) {
    case 5121: return numberAt<std::uint8_t>(bytes, offset) / (normalised ? 255.0 : 1);
    case 5123: return numberAt<std::uint16_t>(bytes, offset) / (normalised ? 65535.0 : 1);
    case 5125: return numberAt<std::uint32_t>(bytes, offset);
    case 5126: return double{numberAt<float>(bytes, offset)};
    default: throw std::invalid_argument("no such component type");
    }
}

std::size_t sizeOf(int type) { return type == 5121 ? 1 : type == 5123 ? 2 : 4; }

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result{};
    for (std::size_t i = 0; i < 16; ++i) {
        for (std::size_t k = 0; k < 4; ++k) {
            result[i] += a[i / 4 * 4 + k] * b[k * 4 + i % 4];
        }
    }
    return result;
}

Matrix matrixOf(const json& node) {
    const Row t = node.value("translation", Row{0, 0, 0});
    const Row q = node.value("rotation", Row{0, 0, 0, 1});
    const Row s = node.value("scale", Row{1, 1, 1});
    const double x = q[0], y = q[1], z = q[2], w = q[3];
    return {(1 - 2 * (y * y + z * z)) * s[0],
            2 * (x * y - z * w) * s[1],
            2 * (x * z + y * w) * s[2],
            t[0],
            2 * (x * y + z * w) * s[0],
            (1 - 2 * (x * x + z * z)) * s[1],
            2 * (y * z - x * w) * s[2],
            t[1],
            2 * (x * z - y * w) * s[0],
            2 * (y * z + x * w) * s[1],
            (1 - 2 * (x * x + y * y)) * s[2],
            t[2],
            0,
            0,
            0,
            1};
}

double dot(const Row& a, const Row& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

Row normalised(Row row) {
    const double length = std::sqrt(dot(row, row));
    for (double& component : row) {
        component /= length;
    }
    return row;
}

/// A normal stays across the face: it is moved by the inverse of the transposed matrix.
Row movedNormal(const Matrix& m, const Row& n) {
    const auto minor = [&](std::size_t row, std::size_t column) {
        const std::size_t a = (row + 1) % 3, b = (row + 2) % 3;
        const std::size_t c = (column + 1) % 3, d = (column + 2) % 3;
        return m[a * 4 + c] * m[b * 4 + d] - m[a * 4 + d] * m[b * 4 + c];
    };
    const double determinant = m[0] * minor(0, 0) + m[1] * minor(0, 1) + m[2] * minor(0, 2);
    Row result(3);
    for (std::size_t i = 0; i < 9; ++i) {
        result[i / 3] += minor(i / 3, i % 3) * n[i % 3] * (determinant < 0 ? -1 : 1);
    }
    return normalised(result);
}

}  // namespace

Row moved(const Matrix& matrix, const Row& point) {
    Row result(3);
    for (std::size_t i = 0; i < 3; ++i) {
        result[i] = matrix[i * 4] * point[0] + matrix[i * 4 + 1] * point[1] +
                    matrix[i * 4 + 2] * point[2] + matrix[i * 4 + 3];
    }
    return result;
}

GltfPlayer::GltfPlayer(const std::string& glb) {
    constexpr std::size_t header = 12;
    constexpr std::size_t chunkHeader = 8;
    if (glb.substr(0, 4) != "glTF" || numberAt<std::uint32_t>(glb, 8) != glb.size()) {
        throw std::invalid_argument("no whole glTF file");
    }
    const std::size_t length = numberAt<std::uint32_t>(glb, header);
    document_ = json::parse(glb.substr(header + chunkHeader, length));
    const std::size_t behind = header + chunkHeader + length;
    buffer_ = behind < glb.size() ? glb.substr(behind + chunkHeader) : "";
}

std::string GltfPlayer::bytes(std::size_t view) const {
    const json& v = document_.at("bufferViews").at(view);
    return buffer_.substr(v.value("byteOffset", std::size_t{0}), v.at("byteLength"));
}

std::vector<Row> GltfPlayer::rows(std::size_t accessor) const {
    static const std::map<std::string, std::size_t> componentsOf{
        {"SCALAR", 1}, {"VEC2", 2}, {"VEC3", 3}, {"VEC4", 4}, {"MAT4", 16}};
    const json& a = document_.at("accessors").at(accessor);
    const std::string data = bytes(a.at("bufferView"));
    const std::size_t components = componentsOf.at(a.at("type"));
    const int type = a.at("componentType");
    const std::size_t stride = document_.at("bufferViews")
                                   .at(a.at("bufferView").get<std::size_t>())
                                   .value("byteStride", components * sizeOf(type));
    std::vector<Row> rows(a.at("count").get<std::size_t>());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t c = 0; c < components; ++c) {
            const std::size_t offset =
                a.value("byteOffset", std::size_t{0}) + i * stride + c * sizeOf(type);
            rows[i].push_back(componentAt(data, offset, type, a.value("normalized", false)));
        }
    }
    return rows;
}

Row GltfPlayer::sampled(const json& sampler, double seconds, bool turns) const {
    const std::vector<Row> times = rows(sampler.at("input"));
    const std::vector<Row> values = rows(sampler.at("output"));
    std::size_t behind = 0;
    while (behind < times.size() && times[behind][0] <= seconds) {
        ++behind;
    }
    if (behind == 0 || behind == times.size()) {
        return behind == 0 ? values.front() : values.back();
    }
    Row value = values[behind - 1];
    if (sampler.at("interpolation") == "STEP") {
        return value;
    }
    Row next = values[behind];
    double share = (seconds - times[behind - 1][0]) / (times[behind][0] - times[behind - 1][0]);
    double rest = 1 - share;
    if (turns) {
        const double agreement = dot(value, next);
        const double angle = std::acos(std::min(std::abs(agreement), 1.0));
        if (angle > 1e-6) {
            share = std::sin(share * angle) / std::sin(angle);
            rest = std::sin(rest * angle) / std::sin(angle);
        }
        share *= agreement < 0 ? -1 : 1;
    }
    for (std::size_t i = 0; i < value.size(); ++i) {
        value[i] = value[i] * rest + next[i] * share;
    }
    return turns ? normalised(value) : value;
}

void GltfPlayer::place(std::size_t node, const Matrix& parent, const std::vector<json>& nodes,
                       std::vector<Matrix>& places) const {
    places.at(node) = product(parent, matrixOf(nodes[node]));
    for (const std::size_t child : nodes[node].value("children", std::vector<std::size_t>())) {
        place(child, places[node], nodes, places);
    }
}

std::vector<Matrix> GltfPlayer::places(std::optional<std::size_t> animation, double seconds) const {
    std::vector<json> nodes = document_.at("nodes");
    if (animation) {
        const json& played = document_.at("animations").at(*animation);
        for (const json& channel : played.at("channels")) {
            const json& target = channel.at("target");
            const std::string path = target.at("path");
            nodes.at(target.at("node"))[path] =
                sampled(played.at("samplers").at(channel.at("sampler").get<std::size_t>()), seconds,
                        path == "rotation");
        }
    }
    std::vector<Matrix> places(nodes.size());
    for (const std::size_t top : document_.at("scenes").at(0).at("nodes")) {
        place(top, unchanged, nodes, places);
    }
    return places;
}

std::vector<GltfPlayer::Drawn> GltfPlayer::drawn(const std::vector<Matrix>& places) const {
    std::vector<Drawn> result;
    const json& nodes = document_.at("nodes");
    for (std::size_t n = 0; n < nodes.size(); ++n) {
        if (!nodes[n].contains("mesh")) {
            continue;
        }
        std::vector<Matrix> joints;
        if (nodes[n].contains("skin")) {
            const json& skin = document_.at("skins").at(nodes[n]["skin"].get<std::size_t>());
            const std::vector<Row> inverse = rows(skin.at("inverseBindMatrices"));
            for (std::size_t j = 0; j < inverse.size(); ++j) {
                Matrix bound{};
                for (std::size_t i = 0; i < bound.size(); ++i) {
                    bound[i] = inverse[j][i % 4 * 4 + i / 4];  // glTF has it column by column
                }
                joints.push_back(product(places.at(skin.at("joints").at(j)), bound));
            }
        }
        const json& mesh = document_.at("meshes").at(nodes[n]["mesh"].get<std::size_t>());
        for (const json& primitive : mesh.at("primitives")) {
            Drawn drawn;
            drawn.node = n;
            drawn.primitive = primitive;
            const json& attributes = primitive.at("attributes");
            const auto part = [&](const char* name) {
                return attributes.contains(name) ? rows(attributes[name]) : std::vector<Row>();
            };
            drawn.places = part("POSITION");
            drawn.normals = part("NORMAL");
            drawn.texels = part("TEXCOORD_0");
            drawn.colours = part("COLOR_0");
            const std::vector<Row> jointOf = part("JOINTS_0");
            const std::vector<Row> weights = part("WEIGHTS_0");
            for (std::size_t v = 0; v < drawn.places.size(); ++v) {
                if (!joints.empty() && weights.at(v) != Row{1, 0, 0, 0}) {
                    throw std::invalid_argument("a vertex of more than one joint");
                }
                const Matrix& matrix = joints.empty()
                                           ? places.at(n)
                                           : joints.at(static_cast<std::size_t>(jointOf.at(v)[0]));
                drawn.places[v] = moved(matrix, drawn.places[v]);
                if (!drawn.normals.empty()) {
                    drawn.normals[v] = movedNormal(matrix, drawn.normals[v]);
                }
            }
            for (const Row& index : rows(primitive.at("indices"))) {
                drawn.corners.push_back(static_cast<std::size_t>(index[0]));
            }
            result.push_back(std::move(drawn));
        }
    }
    return result;
}

}  // namespace mqf2vxb::tests
