// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "tests/files/TemporaryFolder.h"

#include <memory>
#include <string>

namespace trovik::test {

/// A document on a mesh of the zoo.
std::unique_ptr<Document> DocumentOn(const TemporaryFolder& folder, const PolygonMesh& mesh);
/// The same document with two more levels and the active tool Sculpt.
std::unique_ptr<Document> RefinedDocument(const TemporaryFolder& folder, const PolygonMesh& mesh);

/// Applies dabs of the active tool to some faces of the bound level.
void StrokeOver(Document& document, const std::vector<uint32_t>& faces, float radius);

/// A document with each kind of content on a few faces: three levels with the middle one bound,
/// layers of two levels, masks, four tools with changed settings, the settings of pen and freeze
/// brush, mirrors, a view, a transform.
std::unique_ptr<Document> RichDocument(const TemporaryFolder& folder);

/// All data needed to continue the work, as the bytes of a scene file.
std::string StateOf(Document& document, const TemporaryFolder& folder);

/// A new brush without a tool.
std::unique_ptr<BrushOperation> NewBrush();

/// The table of the patch map below a level; empty if there is no map.
std::vector<uint32_t> PatchTable(LevelMesh& level);
bool HasPatchMap(LevelMesh& level);

}  // namespace trovik::test
