#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include <assimp/scene.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "vxbtool/import/motions.h"
#include "vxbtool/import/nodes.h"
#include "vxbtool/import/source.h"

namespace vxbtool::importing {
namespace {

using Times = std::vector<double>;
using Pose = std::function<aiMatrix4x4(double seconds)>;

aiMatrix4x4 turn(float turns, aiVector3D axis) {
    aiMatrix4x4 m;
    return aiMatrix4x4::Rotation(turns * 2 * std::numbers::pi_v<float>, axis.Normalize(), m);
}
aiMatrix4x4 move(float x, float y, float z) {
    aiMatrix4x4 m;
    return aiMatrix4x4::Translation({x, y, z}, m);
}
aiMatrix4x4 size(float x, float y, float z) {
    aiMatrix4x4 m;
    return aiMatrix4x4::Scaling({x, y, z}, m);
}
Times every(double seconds, double end) {
    Times times;
    for (int i = 0; i * seconds <= end + 1e-9; ++i) {
        times.push_back(i * seconds);
    }
    return times;
}

/// A chain of nodes from the root, the last of which draws. Those with key times move.
struct ChainNode {
    Pose pose;
    Times keys;
};

std::unique_ptr<aiScene> sceneOf(const std::vector<ChainNode>& chain) {
    auto scene = std::make_unique<aiScene>();
    scene->mMeshes = new aiMesh* [scene->mNumMeshes = 1] { new aiMesh };
    aiMesh& mesh = *scene->mMeshes[0];
    mesh.mVertices = new aiVector3D[mesh.mNumVertices = 3];
    mesh.mFaces = new aiFace[mesh.mNumFaces = 1];
    mesh.mFaces[0].mIndices = new unsigned[mesh.mFaces[0].mNumIndices = 3]{0, 1, 2};
    auto* animation = new aiAnimation;
    scene->mAnimations = new aiAnimation* [scene->mNumAnimations = 1] { animation };
    animation->mTicksPerSecond = 1000;
    animation->mChannels = new aiNodeAnim*[chain.size()];
    aiNode* parent = nullptr;
    for (std::size_t n = 0; n < chain.size(); ++n) {
        auto* node = new aiNode("node " + std::to_string(n));
        node->mTransformation = chain[n].pose(0);
        if (parent != nullptr) {
            parent->addChildren(1, &node);
        } else {
            scene->mRootNode = node;
        }
        parent = node;
        const std::size_t keys = chain[n].keys.size();
        if (keys == 0) {
            continue;
        }
        auto* channel = new aiNodeAnim;
        animation->mChannels[animation->mNumChannels++] = channel;
        channel->mNodeName = node->mName;
        channel->mPositionKeys = new aiVectorKey[keys];
        channel->mRotationKeys = new aiQuatKey[keys];
        channel->mScalingKeys = new aiVectorKey[keys];
        for (const double seconds : chain[n].keys) {
            aiVector3D scale;
            aiQuaternion rotation;
            aiVector3D position;
            chain[n].pose(seconds).Decompose(scale, rotation, position);
            if (scale.Length() == 0) {  // which tells nothing of the rotation
                chain[n].pose(0).DecomposeNoScaling(rotation, position);
            }
            const double tick = seconds * 1000;
            channel->mPositionKeys[channel->mNumPositionKeys++] = {tick, position};
            channel->mRotationKeys[channel->mNumRotationKeys++] = {tick, rotation};
            channel->mScalingKeys[channel->mNumScalingKeys++] = {tick, scale};
            animation->mDuration = std::max(animation->mDuration, tick);
        }
    }
    parent->mMeshes = new unsigned[parent->mNumMeshes = 1]{0};
    return scene;
}

/// The motion of such a scene, played as the conventions say.
class Played {
public:
    Played(const std::vector<ChainNode>& chain, double scale, std::optional<double> fps = {})
        : scene_(sceneOf(chain)),
          map_(mapCoordinates(*scene_, true, UpAxis::y)),
          placed_(placeCoordinates(map_, scale)),
          chain_(chain),
          scale_(scale),
          made(makeMotions(*scene_, map_, placed_, scale, fps)) {}

    /// The most that points around the drawn node are beside their place, in units.
    [[nodiscard]] double error() const {
        double worst = 0;
        const std::uint32_t frames = made.summaries.at(0).frames;
        for (std::uint32_t frame = 0; frame < 2 * frames; ++frame) {
            // A round that does not end as it begins shows the end once and goes back.
            const double seconds = frame % frames / 30.0;
            for (const aiVector3D& p : {aiVector3D(1, 0, 0), {0, 1, 0}, {0, 0, 1}}) {
                aiVector3D source = p;
                for (std::size_t n = chain_.size(); n-- > 0;) {
                    source = chain_[n].pose(seconds) * source;
                }
                worst = std::max(
                    worst,
                    (shown(p, frame) - Vector(source.x, source.y, source.z) * scale_).Length());
            }
        }
        return worst;
    }

    [[nodiscard]] const model_text::Motion& motion() const { return made.motions.at(0); }

    /// The types and numbers of the steps of the first moving coordinate: "ps0r1t0 30 30".
    [[nodiscard]] std::string steps() const {
        std::string text;
        for (const model_text::Step& step : motion().steps) {
            if (step.kind != model_text::StepKind::keyFrame) {
                break;
            }
            if (text.empty()) {
                std::array<char, 12> code{};
                std::snprintf(code.data(), code.size(), "%03x", step.type & 0xFFFU);
                text = code.data();
            }
            text += " " + std::to_string(step.number);
        }
        return text;
    }

private:
    Vector shown(const aiVector3D& p, std::uint32_t frame) const {
        std::uint32_t c = *map_.find("node " + std::to_string(chain_.size() - 1));
        Vector at = placed_.toCoordinate[c] * Vector(p.x, p.y, p.z);
        for (;; c = placed_.coordinates[c].parent) {
            at = matrixOf(c, frame) * at;
            if (placed_.coordinates[c].parent == c) {
                return at;
            }
        }
    }

    [[nodiscard]] Matrix4 matrixOf(std::uint32_t coordinate, std::uint32_t frame) const {
        const model_text::Coordinate& rest = placed_.coordinates[coordinate];
        Matrix4 m;
        for (unsigned i = 0; i < 9; ++i) {
            m[i / 3][i % 3] = rest.matrix.at(i) / 4096.0;
        }
        for (unsigned i = 0; i < 3; ++i) {
            m[i][3] = rest.translation.at(i);
        }
        for (const model_text::AnimatedCoordinate& animated : motion().coordinates) {
            if (animated.coordinate == coordinate) {
                const auto& [type, values] = valuesAt(animated.start, frame);
                apply(type, values, m);
            }
        }
        return m;
    }

    static void apply(unsigned type, const std::vector<double>& values, Matrix4& m) {
        std::size_t next = 0;
        if ((type & 0xFU) != 0) {
            for (unsigned i = 0; i < 3; ++i) {
                m[i][3] = values.at(next++);
            }
        }
        if ((type & 0xFF0U) == 0) {
            return;
        }
        Matrix3 turned;
        Matrix3 scaled;
        if ((type & 0xF0U) != 0) {
            Matrix3 x;
            Matrix3 z;
            const double unit = 2 * std::numbers::pi / 4096;
            Matrix3::Rotation(values.at(next) * unit, Vector(1, 0, 0), x);
            Matrix3::Rotation(values.at(next + 1) * unit, Vector(0, 1, 0), turned);
            Matrix3::Rotation(values.at(next + 2) * unit, Vector(0, 0, 1), z);
            turned = z * turned * x;
            next += 3;
        }
        for (unsigned i = 0; i < 3 && (type & 0xF00U) != 0; ++i) {
            scaled[i][i] = values.at(next + ((type & 0xF00U) == 0x900U ? 0 : i)) / 4096;
        }
        turned = turned * scaled;
        for (unsigned i = 0; i < 9; ++i) {
            m[i / 3][i % 3] = turned[i / 3][i % 3];
        }
    }

    [[nodiscard]] std::pair<unsigned, std::vector<double>> valuesAt(const std::string& label,
                                                                    std::uint32_t frame) const {
        const std::vector<model_text::Step>& steps = motion().steps;
        const auto labelled = [&](const std::string& name) {
            std::size_t s = 0;
            while (steps.at(s).label != name) {
                ++s;
            }
            return s;
        };
        std::size_t at = labelled(label);
        const auto follow = [&](std::size_t s) {
            return steps.at(s).kind == model_text::StepKind::jump ? labelled(steps[s].target) : s;
        };
        while (frame >= steps.at(at).number) {
            frame -= steps[at].number;
            at = follow(at + 1);
        }
        std::vector<double> values = keyFrame(steps[at]);
        const std::vector<double> next = keyFrame(steps.at(follow(at + 1)));
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] += (next.at(i) - values[i]) * frame / steps[at].number;
        }
        return {steps[at].type, values};
    }

    [[nodiscard]] std::vector<double> keyFrame(const model_text::Step& step) const {
        EXPECT_TRUE(step.number >= 1 && step.number <= 255) << step.number;
        for (const model_text::KeyFrameGroup& group : motion().groups) {
            if (group.type == step.type) {
                static const std::map<unsigned, std::ptrdiff_t> sizes{
                    {0x001, 3}, {0x009, 3}, {0x010, 3}, {0x011, 6}, {0x019, 6}, {0x100, 3},
                    {0x111, 9}, {0x119, 9}, {0x909, 4}, {0x910, 4}, {0x911, 7}};
                const std::ptrdiff_t size = sizes.at(step.type & 0xFFFU);
                const auto first = group.values.begin() + step.keyFrame * size;
                return {first, first + size};
            }
        }
        ADD_FAILURE() << "no group of type " << step.type;
        return {};
    }

    std::unique_ptr<aiScene> scene_;
    CoordinateMap map_;
    PlacedCoordinates placed_;
    std::vector<ChainNode> chain_;
    double scale_;

public:
    Motions made;
};

const ChainNode still{[](double) { return aiMatrix4x4(); }, {}};

TEST(ImportMotions, TakeTheSmallestTypeAndTheSourcesKeys) {
    struct Case {
        const char* what;
        ChainNode node;
        const char* steps;
    };
    const auto seconds = [](double s) { return static_cast<float>(s); };
    const std::vector<Case> cases{
        {"turns by an eighth and back",
         {[=](double s) {
              return turn(seconds(s < 1 ? s : 2 - s) / 8, {0, 0, 1});
          },
          {0, 1, 2}},
         "010 30 30"},
        {"moves and stays there, then goes back at once",
         {[=](double s) { return move(seconds(s), 0, 0); }, {0, 1}},
         "009 30 1"},
        {"moves beyond 16 bits",
         {[=](double s) { return move(seconds(s) * 40, 0, 0); }, {0, 1}},
         "001 30 1"},
        {"grows along one axis",
         {[=](double s) { return size(1, 1 + seconds(s), 1); }, {0, 1}},
         "100 30 1"},
        {"grows and turns",
         {[=](double s) {
              return turn(seconds(s) / 8, {1, 0, 0}) *
                     size(1 + seconds(s), 1 + seconds(s), 1 + seconds(s));
          },
          {0, 1}},
         "910 30 1"},
        {"everything at once",
         {[=](double s) {
              return move(0, seconds(s), 0) * turn(seconds(s) / 8, {0, 1, 0}) *
                     size(1, 1, 1 + seconds(s));
          },
          {0, 1}},
         "119 30 1"},
        {"keys in between that change nothing, one of them between two frames",
         {[=](double s) { return move(seconds(s), 0, 0); }, {0, 0.21, 0.25, 0.5, 1}},
         "009 30 1"},
        {"stays for long: no step is longer than 255 frames",
         {[=](double s) { return s < 20 ? aiMatrix4x4() : move(seconds(s) - 20, 0, 0); },
          {0, 20, 21}},
         "009 255 255 90 30 1"},
        {"turns while it is scaled at rest",
         {[=](double s) {
              return turn(seconds(s) / 8, {1, 0, 0}) * size(2, 2, 2);
          },
          {0, 1}},
         "910 30 1"},
        {"mirrored at rest",
         {[=](double s) {
              return turn(seconds(s) / 8, {1, 0, 0}) * size(-1, -1, -1);
          },
          {0, 1}},
         "910 30 1"},
        {"mirrored at rest, and grows",
         {[=](double s) { return size(-1 - seconds(s), -1 - seconds(s), -1 - seconds(s)); },
          {0, 1}},
         "910 30 1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Played played({still, c.node}, 1000);
        EXPECT_EQ(played.steps(), c.steps);
        EXPECT_LT(played.error(), 3.2);  // half a unit, and a tenth of a degree of 1000 units
        EXPECT_EQ(played.made.tolerance, 1);
    }
}

TEST(ImportMotions, FollowTurnsThatAnglesDoNotGoEvenlyIn) {
    const auto about = [](aiVector3D axis, double turns, double length) {
        return ChainNode{[=](double s) { return turn(static_cast<float>(s * turns), axis); },
                         every(0.25, length)};
    };
    // A round of whole turns takes no frame to get back.
    const Played wheel({about({1, 0, 0}, 1, 2)}, 1000);
    EXPECT_EQ(wheel.made.summaries[0].frames, 60);
    EXPECT_EQ(wheel.steps(), "010 59 1");
    EXPECT_LT(wheel.error(), 2.5);
    // 40 turns leave 16 bits.
    const Played fast({about({0, 1, 0}, 1.9, 20)}, 1000);
    EXPECT_LT(fast.error(), 2.5);
    EXPECT_LT(fast.made.summaries[0].steps, 200);
    // Through the angles where those about x and z fall together, and about a slanted axis.
    for (const aiVector3D& axis : {aiVector3D(0, 1, 0), {1, 1, 1}, {0.2F, -1, 0.3F}, {1, 0, -2}}) {
        const Played slanted({{[](double) {
                                   return turn(0.1F, {1, 0, 0.2F});
                               },
                               {}},
                              about(axis, 0.4, 5)},
                             1000);
        EXPECT_LT(slanted.error(), 2.5);
        EXPECT_LE(slanted.made.summaries[0].angleError, 0.1001);
        EXPECT_LT(slanted.made.summaries[0].steps, 150);
    }
}

TEST(ImportMotions, GoThroughNodesThatAreFoldedAndScalesThatAreNone) {
    const ChainNode folded{[](double) {
                               return move(1, 2, 3) * turn(0.25F, {0, 1, 0}) * size(-3, 3, 3);
                           },
                           {}};
    const ChainNode moving{
        [](double s) {
            return move(static_cast<float>(s), 0, 0) * turn(static_cast<float>(s) / 8, {0, 0, 1});
        },
        {0, 1}};
    const ChainNode large{[](double) { return size(20, 20, 20); }, {}};
    const Played deep({folded, moving, folded, large, moving}, 100);
    EXPECT_EQ(deep.motion().coordinates.size(), 2);
    EXPECT_LT(deep.error(), 25);  // points are 18,000 units from the first joint

    const ChainNode hidden{[](double s) {
                               const auto f = static_cast<float>(1 - s);
                               return turn(0.125F, {0, 1, 0}) * size(f, f, f);
                           },
                           {0, 1}};
    const Played hides({hidden}, 1000);
    EXPECT_EQ(hides.steps(), "910 30 1");
    EXPECT_LT(hides.error(), 3);
}

TEST(ImportMotions, StandWhereTheyAreAskedFor) {
    const ChainNode curve{[](double s) { return move(static_cast<float>(std::sin(s * 6)), 0, 0); },
                          every(1.0 / 30, 2)};
    EXPECT_EQ(Played({curve}, 1000, 5).steps(), "009 6 6 6 6 6 6 6 6 6 6 1");
    const Played exact({curve}, 1000);
    EXPECT_LE(exact.made.summaries[0].positionError, 0.5001);
    EXPECT_LT(exact.error(), 1.5);
}

TEST(ImportMotions, RaiseTheToleranceForMoreThanAFileCanReach) {
    unsigned random = 1;
    std::vector<float> noise(3 * 30 * 500);
    for (float& value : noise) {
        random = random * 1664525U + 1013904223U;
        value = static_cast<float>(random >> 16U) / 65536.0F / 8;
    }
    const ChainNode trembling{
        [&](double s) {
            const auto frame = static_cast<std::size_t>(std::lround(s * 30)) * 3;
            return move(40 + noise.at(frame), noise.at(frame + 1), noise.at(frame + 2)) *
                   turn(static_cast<float>(s) / 500, {0, 0, 1});
        },
        every(1.0 / 30, 499)};
    const Played played({trembling}, 1000);
    EXPECT_GT(played.made.tolerance, 1);
    ASSERT_EQ(played.made.lost.size(), 1);
    EXPECT_EQ(played.made.lost[0].count, played.made.tolerance);
    std::size_t words = 0;
    for (const model_text::KeyFrameGroup& group : played.motion().groups) {
        words += group.values.size() / 6 * 5;
    }
    EXPECT_LE(words, 65536);
    EXPECT_LE(played.motion().steps.size(), 65535);
    EXPECT_LE(played.made.summaries[0].positionError, 0.5 * played.made.tolerance + 0.001);
}

TEST(ImportMotions, LeaveOutWhatDoesNotMoveAndRefuseWhatNeverEnds) {
    const Played still2({{[](double) { return turn(0.1F, {1, 1, 0}); }, {0, 1}}}, 1000);
    EXPECT_TRUE(still2.made.motions.empty());
    ASSERT_EQ(still2.made.lost.size(), 1);
    EXPECT_EQ(still2.made.lost[0].reason, "nothing moves in it");

    EXPECT_THROW(
        Played({{[](double s) { return move(static_cast<float>(s), 0, 0); }, {0, 4000}}}, 1),
        ImportFault);
}

}  // namespace
}  // namespace vxbtool::importing
