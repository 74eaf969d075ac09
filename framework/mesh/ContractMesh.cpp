// SPDX-License-Identifier: Apache-2.0

/// \file
/// Members of the mesh classes in host/Mesh.h that do not depend on a level or a change.
#include "host/Mesh.h"

namespace trovik {

Layer::~Layer() = default;
Mesh::Mesh() = default;
Mesh::~Mesh() = default;
SubdivisionLevel::~SubdivisionLevel() = default;

MeshChange::MeshChange(Mesh* changedMesh)
    : mesh(changedMesh), records(nullptr), recordCount(nullptr) {}
MeshChange::~MeshChange() = default;

SurfacePoint::SurfacePoint(Mesh* onMesh, uint32_t, uint32_t faceIndex)
    : mesh(onMesh), face(faceIndex) {
    const Vertex& v =
        onMesh->vertices[onMesh->faceVertexIndices[faceIndex * onMesh->CornersPerFace()]];
    position = Vector(v.x, v.y, v.z);
    onMesh->FaceNormal(&normal, faceIndex);
    normal.Normalize();
}

const ClassDesc* MeshRenderer::StaticClass() {
    static const ClassDesc desc(TreeNode::StaticClass(),
                                TreeNode::StaticClass(),
                                QStringLiteral("MeshRenderer"),
                                QStringLiteral("Mesh renderer"),
                                nullptr,
                                1,
                                0);
    return &desc;
}
const ClassDesc* MeshRenderer::RuntimeClass() const { return StaticClass(); }

const ClassDesc* Mesh::StaticClass() {
    static const ClassDesc desc(TreeNode::StaticClass(),
                                TreeNode::StaticClass(),
                                QStringLiteral("Mesh"),
                                QStringLiteral("Mesh"),
                                nullptr,
                                1,
                                0);
    return &desc;
}
const ClassDesc* Mesh::RuntimeClass() const { return StaticClass(); }

const ClassDesc* SubdivisionLevel::StaticClass() {
    static const ClassDesc desc(Mesh::StaticClass(),
                                Mesh::StaticClass(),
                                QStringLiteral("SubdivisionLevel"),
                                QStringLiteral("Subdivision level"),
                                nullptr,
                                1,
                                0);
    return &desc;
}
const ClassDesc* SubdivisionLevel::RuntimeClass() const { return StaticClass(); }

const ClassDesc* Geometry::StaticClass() {
    static const ClassDesc desc(TreeNode::StaticClass(),
                                TreeNode::StaticClass(),
                                QStringLiteral("Geometry"),
                                QStringLiteral("Geometry"),
                                nullptr,
                                1,
                                0);
    return &desc;
}
const ClassDesc* Geometry::RuntimeClass() const { return StaticClass(); }

}  // namespace trovik
