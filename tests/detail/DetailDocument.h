// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/document/DocumentStroke.h"
#include "tests/meshes/MeshZoo.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik::test {

/// Splits each quad along its diagonal. Keeps UVs, colours and groups.
PolygonMesh Triangles(const PolygonMesh& quads);

/// A document whose strokes adapt edges to a length of `length` radii. The tool is Sculpt, with a
/// radius of 0.4.
std::unique_ptr<Document> DetailDocument(const PolygonMesh& mesh, float length);

/// Applies a dab of the open stroke at the surface nearest to a point.
void Dab(Document& document, const Vector& point, float strength = 0.05f);
/// A stroke through the points.
void Stroke(Document& document, const std::vector<Vector>& points, float strength = 0.05f);

/// Everything that undo restores: faces, positions, normals, mask, visibility, attributes.
std::string BitsOf(Document& document);

/// Returns a description of the first error in the topology of level 0 or in the pick tree; empty
/// if there is none. Both are compared with ones that are built from the faces.
std::string FaultOf(Document& document);

/// Lengths of all edges whose ends are within a distance of a point.
std::vector<float> EdgeLengthsAround(Document& document, const Vector& point, float radius);

}  // namespace trovik::test
