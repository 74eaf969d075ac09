// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace trovik::test {

using CallLog = std::vector<std::string>;

/// A transform that returns preset values; points pass through it unchanged.
class FakeTransform : public Transformation {
public:
    void LocalToWorld(Vector* out, const Vector* in, float) const override { *out = *in; }
    void WorldToLocal(Vector* out, const Vector* in, float) const override { *out = *in; }
    void LocalToWorldMatrix(Matrix* out) const override { *out = matrix; }
    void Scale(Vector* out) const override { *out = scale; }

    Vector scale{1.0f, 1.0f, 1.0f};
    Matrix matrix;
};

/// A change that writes its calls to a log.
class FakeChange : public MeshChange {
public:
    /// \param finishThrows  Finish throws std::runtime_error while this is true.
    FakeChange(Mesh* changed, std::string changeName, CallLog& callLog, const bool& finishThrows)
        : MeshChange(changed), name(std::move(changeName)), log(callLog), failing(finishThrows) {
        mesh = changed;
        records = &store;
        recordCount = &store.fill;
    }
    ~FakeChange() override { log.push_back("delete " + name); }
    void Finish(bool keepTopology, bool joinPrevious) override {
        log.push_back("finish " + name + (keepTopology ? " keep" : " new") +
                      (joinPrevious ? " join" : " alone"));
        if (failing) throw std::runtime_error("no room for " + name);
    }

protected:
    uint32_t ReserveLayerSlot(uint32_t) override { return 0; }

private:
    std::string name;
    CallLog& log;
    const bool& failing;
    Store<StoredVertexInfo> store;
};

/// A mesh that logs a brush's queries and returns values set by the test. It has one triangle, and
/// its traversals visit nothing. `Base` is Mesh or SubdivisionLevel.
template <typename Base>
class FakeOf : public Base {
public:
    FakeOf(std::string meshName, CallLog& callLog) : name(std::move(meshName)), log(callLog) {
        this->meshType = 0;
        this->faceCount = 1;
        for (uint32_t i = 0; i < 3; ++i) {
            this->faceVertexIndices.Append(i);
            this->vertices.Append(
                {static_cast<float>(i), static_cast<float>(i * i), 0.0f, 0, 0, {0, 0, 0}});
            this->vertexNormals.Append({0, 0, 32767, 0});
        }
    }

    MeshChange* StartChange() override {
        return new FakeChange(this, name + std::to_string(changesStarted++), log, finishThrows);
    }
    uint32_t EnumerateAdjacentVertices(AdjacentVertexEnumerator*, uint32_t, uint32_t) override {
        return 0;
    }
    void EnumerateFaces(uint32_t, FaceEnumerator*, int) override {}
    void EnumerateVertices(uint32_t, VertexEnumerator*) override {
        ++walks;
        if (onWalk) onWalk();
    }
    int32_t MirrorVertex(uint32_t, uint32_t, uint32_t*, uint32_t*) override { return -1; }
    uint32_t QuadEdgeNeighbour(uint32_t, uint32_t) override { return openBorder; }
    void FaceNormal(Vector* out, uint32_t) override { *out = Vector(0.0f, 0.0f, 1.0f); }
    trovik::Geometry* Geometry() override { return geometry; }
    bool Lock(MeshUnlocker* unlocker) override {
        log.push_back("lock " + name);
        lastUnlocker = unlocker;
        freeAtLock = unlocker->IsStrokeFree();
        flagsAtLock = g_pKernel->crashFlags;
        return lockable;
    }
    int FreezeQuery() override { return freeze; }
    trovik::Layer* Layer() override { return layer; }
    void Unlock() override {
        log.push_back("unlock " + name + " at version " + std::to_string(this->Version()));
        flagsAtUnlock = g_pKernel->crashFlags;
    }

    std::string name;
    CallLog& log;
    trovik::Geometry* geometry = nullptr;
    bool lockable = true;
    int freeze = 0;
    trovik::Layer* layer = nullptr;
    int changesStarted = 0;
    bool finishThrows = false;
    int walks = 0;
    std::function<void()> onWalk;
    MeshUnlocker* lastUnlocker = nullptr;
    bool freeAtLock = false;
    uint32_t flagsAtLock = 0;
    uint32_t flagsAtUnlock = 0;
};

/// A mesh that is not a level of a geometry.
using FakePlainMesh = FakeOf<Mesh>;

class FakeLevel : public FakeOf<SubdivisionLevel> {
public:
    using FakeOf<SubdivisionLevel>::FakeOf;
    int Index() const override { return 0; }
};

/// A geometry with one fake level.
class FakeGeometry : public Geometry {
public:
    FakeGeometry(const std::string& levelName, CallLog& log) : level(levelName, log) {
        level.geometry = this;
    }
    SubdivisionLevel* LowestLevel() const override { return const_cast<FakeLevel*>(&level); }
    SubdivisionLevel* HighestLevel() const override { return LowestLevel(); }
    SubdivisionLevel* LevelByIndex(uint32_t index) const override {
        return index == 0 ? LowestLevel() : nullptr;
    }
    trovik::Transformation* Transformation() const override {
        return const_cast<FakeTransform*>(&place);
    }
    /// A hit at the level's first corner.
    SurfacePoint Hit() {
        SurfacePoint hit;
        hit.mesh = &level;
        hit.normal = Vector(0.0f, 0.0f, 1.0f);
        return hit;
    }

    FakeLevel level;
    FakeTransform place;
};

/// An empty layer.
class FakeLayer : public Layer {
public:
    Vector* get(Vector* out, uint32_t) const override {
        *out = Vector();
        return out;
    }
    void set(Vector*, uint32_t, uint32_t, const Vector*, bool) override {}
    bool Writable() const override { return true; }
};

}  // namespace trovik::test
