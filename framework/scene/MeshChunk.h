// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/SceneStream.h"

namespace trovik {

/// The content of chunk GEOM. Level 0 can be created only after its positions (chunk LEVL) have
/// also been read.
struct GeometryChunk {
    PolygonMesh base;  ///< Without positions.
    uint32_t vertexCount = 0;
    uint32_t levelCount = 0;
    uint32_t bound = 0;
    Matrix toWorld;
    Matrix toLocal;
    Vector scale;
};

/// Chunk GEOM: faces of level 0, number of levels, index of the bound level, transform.
void WriteGeometryChunk(SceneStream& stream,
                        const LevelGeometry& geometry,
                        const std::string& name);
GeometryChunk ReadGeometryChunk(SceneStream& stream);

/// Chunk LEVL: the positions, normals, freeze bytes and face flags of one level, and the values
/// that it had when the levels above and below were last updated.
/// \throw Cancelled.
void WriteLevelChunk(SceneStream& stream, LevelGeometry& geometry, uint32_t index, JobControl* job);

/// Reads the levels one by one and creates the geometry from them.
class LevelChunkReader {
public:
    /// \param jobControl  receives the progress of Read, which throws Cancelled; may be null.
    /// Borrowed.
    LevelChunkReader(GeometryChunk chunk, JobControl* jobControl)
        : head(std::move(chunk)), job(jobControl) {}
    void Read(SceneStream& stream);
    /// Returns whether all levels have been read.
    bool IsComplete() const {
        return geometry != nullptr && geometry->LevelCount() == head.levelCount;
    }
    /// Null before the first level has been read.
    LevelGeometry* Geometry() const { return geometry.get(); }
    /// Binds the level that was bound when the scene was saved, and returns the geometry. Call only
    /// when IsComplete returns true.
    std::unique_ptr<LevelGeometry> Take();
    const GeometryChunk& Head() const { return head; }

private:
    LevelMesh& NextLevel(const std::vector<Vector>& positions);

    GeometryChunk head;
    JobControl* job;
    std::unique_ptr<LevelGeometry> geometry;
    std::vector<SeenByNeighbours> seen;
};

/// Chunk TMIR: the topological mirror, which depends on the positions that level 0 had when the
/// mirror was computed. Written only if there is one.
void WriteMirrorChunk(SceneStream& stream, const LevelGeometry& geometry);
void ReadMirrorChunk(SceneStream& stream, LevelGeometry& geometry);

}  // namespace trovik
