// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/SceneStream.h"

namespace trovik {

/// What chunk GEOM tells beside level 0 itself, which needs its positions (chunk LEVL) first.
struct GeometryChunk {
    PolygonMesh base;  ///< without positions
    uint32_t vertexCount = 0;
    uint32_t levelCount = 0;
    uint32_t bound = 0;
    Matrix toWorld;
    Matrix toLocal;
    Vector scale;
};

/// Chunk GEOM: faces of level 0, number of levels, which is bound, transformation.
void WriteGeometryChunk(SceneStream& stream,
                        const LevelGeometry& geometry,
                        const std::string& name);
GeometryChunk ReadGeometryChunk(SceneStream& stream);

/// Chunk LEVL: positions, normals, freeze bytes, face flags of one level, and what the levels above
/// and below last saw of it.
/// \throw Cancelled.
void WriteLevelChunk(SceneStream& stream, LevelGeometry& geometry, uint32_t index, JobControl* job);

/// Reads level after level and makes the geometry from them.
class LevelChunkReader {
public:
    /// \param jobControl  of Read, which throws Cancelled; null: nobody. Borrowed.
    LevelChunkReader(GeometryChunk chunk, JobControl* jobControl)
        : head(std::move(chunk)), job(jobControl) {}
    void Read(SceneStream& stream);
    /// Whether all levels were read.
    bool IsComplete() const {
        return geometry != nullptr && geometry->LevelCount() == head.levelCount;
    }
    /// Null before the first level.
    LevelGeometry* Geometry() const { return geometry.get(); }
    /// Binds the level that was bound and hands the geometry out. Only when complete.
    std::unique_ptr<LevelGeometry> Take();
    const GeometryChunk& Head() const { return head; }

private:
    LevelMesh& NextLevel(const std::vector<Vector>& positions);

    GeometryChunk head;
    JobControl* job;
    std::unique_ptr<LevelGeometry> geometry;
    std::vector<SeenByNeighbours> seen;
};

/// Chunk IMPT: where level 0 was when it was imported, as the differences from where it is; or the
/// whole imported mesh, where level 0 is another by now. \param scenePath  of the scene file.
/// \throw Cancelled, as ReadImportChunk.
void WriteImportChunk(SceneStream& stream,
                      const LevelGeometry& geometry,
                      const PolygonMesh& imported,
                      const std::string& scenePath,
                      JobControl* job);
/// The imported mesh, of this name. \param isOther  is set where its faces are not those of level
/// 0; it then brings what it carries, which otherwise level 0 has.
PolygonMesh ReadImportChunk(SceneStream& stream,
                            const LevelGeometry& geometry,
                            const std::string& name,
                            const std::string& scenePath,
                            bool& isOther,
                            JobControl* job);

/// Chunk TMIR: the topological mirror, which was found by where level 0 was at that time. Written
/// only where there is one.
void WriteMirrorChunk(SceneStream& stream, const LevelGeometry& geometry);
void ReadMirrorChunk(SceneStream& stream, LevelGeometry& geometry);

}  // namespace trovik
