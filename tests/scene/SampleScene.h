// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "tests/files/TemporaryFolder.h"

#include <memory>
#include <string>

namespace trovik::test {

/// A document on a mesh of the zoo.
std::unique_ptr<Document> DocumentOn(const TemporaryFolder& folder, const PolygonMesh& mesh);
/// The same with two more levels, and the tool Sculpt at work.
std::unique_ptr<Document> RefinedDocument(const TemporaryFolder& folder, const PolygonMesh& mesh);

/// Dabs of the active tool on some faces of the bound level.
void StrokeOver(Document& document, const std::vector<uint32_t>& faces, float radius);

/// One of everything on a few faces: three levels with the middle one bound, layers of two levels,
/// freezing, four tools with settings of their own, those of pen and freeze brush, mirrors, a view,
/// a transformation.
std::unique_ptr<Document> RichDocument(const TemporaryFolder& folder);

/// Everything that work goes on from, as the bytes of a scene file.
std::string StateOf(Document& document, const TemporaryFolder& folder);

/// A new brush without a tool.
std::unique_ptr<BrushOperation> NewBrush();

/// Table of the patch map below a level; empty where there is no map.
std::vector<uint32_t> PatchTable(LevelMesh& level);
bool HasPatchMap(LevelMesh& level);

}  // namespace trovik::test
