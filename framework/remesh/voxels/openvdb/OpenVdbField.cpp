// SPDX-License-Identifier: Apache-2.0

/// \file The module `trovik-openvdb`.
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/modules/ModuleEntry.h"
#include "framework/remesh/voxels/VoxelField.h"

#include <tbb/task_arena.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <openvdb/openvdb.h>
#include <openvdb/tools/MeshToVolume.h>
#include <string>

namespace trovik {

namespace {

using Grid = openvdb::FloatGrid;

/// Width of the band with exact distances on each side of the surface, in voxels. Both ends of an
/// edge that crosses the surface must be in the band.
constexpr float bandWidth = 1.5f;

/// A triangle mesh in voxel coordinates, in the form that the library reads.
class VoxelMesh {
public:
    VoxelMesh(const std::vector<std::array<float, 3>>& meshPositions,
              const std::vector<uint32_t>& meshTriangles,
              float voxelSize)
        : positions(meshPositions),
          triangles(meshTriangles),
          size(static_cast<double>(voxelSize)) {}

    // The names are those that the library requires.
    // NOLINTBEGIN(readability-identifier-naming)
    std::size_t polygonCount() const { return triangles.size() / 3; }
    std::size_t pointCount() const { return positions.size(); }
    std::size_t vertexCount(std::size_t) const { return 3; }
    void getIndexSpacePoint(std::size_t polygon, std::size_t corner, openvdb::Vec3d& point) const {
        const auto& p = positions[triangles[polygon * 3 + corner]];
        for (int axis = 0; axis < 3; ++axis)
            point[axis] = static_cast<double>(p[static_cast<std::size_t>(axis)]) / size;
    }
    // NOLINTEND(readability-identifier-naming)

private:
    const std::vector<std::array<float, 3>>& positions;
    const std::vector<uint32_t>& triangles;
    double size;
};

/// Passes the library's progress to a phase. Exceptions must not leave the library's tasks, so a
/// cancellation is stored.
class PhaseInterrupter {
public:
    explicit PhaseInterrupter(JobPhase& ofPhase) : phase(ofPhase) {}
    bool IsCancelled() const { return isCancelled; }

    // NOLINTBEGIN(readability-identifier-naming)
    void start(const char*) {}
    void end() {}
    /// \param percent  -1 if the library does not specify the progress.
    bool wasInterrupted(int percent = -1) {
        if (isCancelled) return true;
        try {
            if (percent > reached)
                phase.Reach(static_cast<uint64_t>(reached = percent));
            else
                phase.Poll();
        } catch (const Cancelled&) {
            isCancelled = true;
        }
        return isCancelled;
    }
    // NOLINTEND(readability-identifier-naming)

private:
    JobPhase& phase;
    int reached = 0;
    bool isCancelled = false;
};

class OpenVdbField final : public VoxelField {
public:
    explicit OpenVdbField(Grid::Ptr made) : grid(std::move(made)) {
        for (auto leaf = grid->tree().cbeginLeaf(); leaf; ++leaf) {
            const openvdb::Coord& origin = leaf->origin();
            blocks.push_back({{origin.x(), origin.y(), origin.z()}, leaf->buffer().data()});
        }
        std::sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) {
            return a.origin < b.origin;
        });
    }
    const std::vector<Block>& Blocks() const override { return blocks; }
    float Value(const Voxel& voxel) const override {
        return grid->tree().getValue(openvdb::Coord(voxel[0], voxel[1], voxel[2]));
    }

private:
    static_assert(Grid::TreeType::LeafNodeType::DIM == blockSide);

    Grid::Ptr grid;
    std::vector<Block> blocks;
};

std::unique_ptr<VoxelField> Measure(const VoxelMesh& mesh, JobControl* job) {
    static_assert(openvdb::FloatTree::LeafNodeType::LOG2DIM == 3);
    // Each poll reads the clock, because the library rarely polls after the first third of the
    // work.
    JobPhase phase(job, "Measuring distances", 100, 1);
    PhaseInterrupter interrupter(phase);
    const auto transform = openvdb::math::Transform::createLinearTransform(1.0);
    Grid::Ptr grid;
    // The library merges the results of its threads in the order in which they finish, and uses the
    // first of several equally near triangles. One thread always gives the same result.
    tbb::task_arena arena(1);
    arena.execute([&] {
        grid =
            openvdb::tools::meshToVolume<Grid>(interrupter, mesh, *transform, bandWidth, bandWidth);
    });
    if (interrupter.IsCancelled()) throw Cancelled();
    phase.Reach(100);
    phase.Finish();
    return std::make_unique<OpenVdbField>(std::move(grid));
}

// openvdb::initialize is not called. It registers types for reading and writing files, which this
// module does not do, and it crashes in a module with hidden symbols: the name of a tree type and
// the flag that the name has been set are then in different copies of the class.
class OpenVdbLibrary final : public VoxelLibrary {
public:
    std::unique_ptr<VoxelField> Distances(const std::vector<std::array<float, 3>>& positions,
                                          const std::vector<uint32_t>& triangles,
                                          float voxelSize,
                                          JobControl* job) const override {
        try {
            return Measure(VoxelMesh(positions, triangles, voxelSize), job);
        } catch (const std::bad_alloc&) {
            throw HostError("not enough memory for voxels of this size");
        } catch (const HostError&) {
            throw;
        } catch (const Cancelled&) {
            throw;
        } catch (const std::exception& error) {
            throw HostError(std::string("cannot measure the distances: ") + error.what());
        }
    }
};

}  // namespace

}  // namespace trovik

const void* trovikModule(const char* libraryVersion) {
    if (std::strcmp(libraryVersion, TROVIK_MODULE_VERSION) != 0) return nullptr;
    static const trovik::OpenVdbLibrary library;
    const trovik::VoxelLibrary* interface = &library;
    return interface;
}
