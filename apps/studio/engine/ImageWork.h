// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/Engine.h"
#include "framework/baking/MapBaker.h"
#include "framework/render/RenderImage.h"

/// \file
/// Work for Engine::Compute.
namespace trovik::studio {

/// Renders the surface with ray tracing as seen in the view: first coarse images, then the image
/// that the step "render" with these options writes.
ImageWork RenderWork(const RenderOptions& options);

/// Bakes a map as the step "bake" does, without writing it. If there are several tiles, only the
/// first is shown. Displacements are mapped to grey or colours so that the largest one is black or
/// white.
ImageWork BakeWork(const BakeOptions& options);

/// Converts a render; the image does not share its memory.
QImage ToQImage(const RenderImage& picture);

}  // namespace trovik::studio
