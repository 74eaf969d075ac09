// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "tests/files/TemporaryFolder.h"

#include <memory>
#include <string>

namespace trovik::test {

/// Returns a document on a sample mesh.
std::unique_ptr<Document> DocumentOn(const TemporaryFolder& folder, const PolygonMesh& mesh);
/// Returns the same document with two more levels and the tool Sculpt active.
std::unique_ptr<Document> RefinedDocument(const TemporaryFolder& folder, const PolygonMesh& mesh);

/// Applies dabs of the active tool to these faces of the bound level.
void StrokeOver(Document& document, const std::vector<uint32_t>& faces, float radius);

/// Returns a document with few faces and every kind of content: three levels with the middle one
/// bound, layers on two levels, masks, four tools with changed settings, settings of the pen and
/// the freeze brush, mirrors, a view and a transform.
std::unique_ptr<Document> RichDocument(const TemporaryFolder& folder);

/// Returns the complete state of the document as the bytes of a scene file.
std::string StateOf(Document& document, const TemporaryFolder& folder);

/// Returns a new brush without a tool.
std::unique_ptr<BrushOperation> NewBrush();

/// Returns the table of the patch map that is a child of a level; empty if there is no map.
std::vector<uint32_t> PatchTable(LevelMesh& level);
bool HasPatchMap(LevelMesh& level);

}  // namespace trovik::test
