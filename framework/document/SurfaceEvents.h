// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"

namespace trovik {

/// Passes the changes of a document's geometry to its observers.
class Document::SurfaceEvents final : public GeometryObserver {
public:
    explicit SurfaceEvents(Document& ofDocument);
    ~SurfaceEvents();
    SurfaceEvents(const SurfaceEvents&) = delete;
    SurfaceEvents& operator=(const SurfaceEvents&) = delete;

    void SurfaceChanged(const SurfaceChange& change) override;

private:
    Document& document;
    LevelGeometry& geometry;
};

}  // namespace trovik
