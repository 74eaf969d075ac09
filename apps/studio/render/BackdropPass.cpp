// SPDX-License-Identifier: Apache-2.0
#include "render/BackdropPass.h"

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

const char* const backgroundVertexShader = R"(
void main() {
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    gl_Position = vec4(corner, 1.0, 1.0);
}
)";

// The gradient changes slowly over many pixels; noise of half a quantisation step prevents banding;
// see Roberts: "Picture Coding Using Pseudo-Random Noise" (1962).
const char* const backgroundFragmentShader = R"(
uniform vec3 bottom;
uniform vec3 top;
uniform vec2 size;
layout(location = 0) out vec4 fragment;
void main() {
    vec2 at = gl_FragCoord.xy / size;
    vec3 color = mix(bottom, top, smoothstep(0.0, 1.0, at.y));
    vec2 fromCentre = (at - vec2(0.5, 0.55)) * vec2(1.0, 0.9);
    color *= 1.06 - 0.34 * dot(fromCentre, fromCentre);
    float noise = fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715))));
    fragment = vec4(color + (noise - 0.5) / 255.0, 1.0);
}
)";

const char* const floorVertexShader = R"(
uniform mat4 worldToClip;
uniform vec3 centre;
uniform float extent;
out vec2 floorPoint;
void main() {
    vec2 corner = vec2((gl_VertexID & 1) != 0 ? 1.0 : -1.0, (gl_VertexID & 2) != 0 ? 1.0 : -1.0);
    vec3 world = centre + vec3(corner.x * extent, 0.0, corner.y * extent);
    floorPoint = world.xz;
    gl_Position = worldToClip * vec4(world, 1.0);
}
)";

const char* const floorFragmentShader = R"(
in vec2 floorPoint;
uniform vec2 middle;
uniform float extent;
uniform float spacing;
uniform float surfaceRadius;
uniform float pixelRatio;
uniform float gridOpacity;
uniform float groundOpacity;
layout(location = 0) out vec4 fragment;

vec4 Over(vec4 front, vec4 behind) {
    float alpha = front.a + behind.a * (1.0 - front.a);
    return vec4(
        (front.rgb * front.a + behind.rgb * behind.a * (1.0 - front.a)) / max(alpha, 1e-6), alpha);
}

// Coverage of the lines x = n * distance and y = n * distance, which fade out where they get too
// dense.
vec2 Lines(float distance, float width) {
    vec2 scaled = floorPoint / distance;
    vec2 slope = vec2(length(vec2(dFdx(scaled.x), dFdy(scaled.x))),
                      length(vec2(dFdx(scaled.y), dFdy(scaled.y))));
    vec2 pixels = abs(fract(scaled + 0.5) - 0.5) / max(slope, 1e-20);
    vec2 fade = 1.0 - smoothstep(0.10, 0.45, slope * pixelRatio);
    return fade * clamp(0.5 + 0.5 * width * pixelRatio - pixels, 0.0, 1.0);
}

void main() {
    float away = length(floorPoint - middle);
    float fade = 1.0 - smoothstep(0.25, 1.0, away / extent);
    fade *= fade;
    vec4 color = vec4(0.0);
    if (groundOpacity > 0.0) {
        float shade = exp(-pow(away / surfaceRadius, 2.0) * 1.6);
        color = vec4(mix(vec3(0.34, 0.35, 0.37), vec3(0.06), shade),
                     groundOpacity * max(fade * 0.55, shade * 0.8));
    }
    if (gridOpacity > 0.0) {
        vec2 fine = Lines(spacing, 1.0);
        vec2 coarse = Lines(spacing * 10.0, 1.0);
        float alpha = max(0.09 * max(fine.x, fine.y), 0.26 * max(coarse.x, coarse.y));
        color = Over(vec4(vec3(0.80, 0.82, 0.86), alpha * fade * gridOpacity), color);
        vec2 slope = vec2(length(vec2(dFdx(floorPoint.x), dFdy(floorPoint.x))),
                          length(vec2(dFdx(floorPoint.y), dFdy(floorPoint.y))));
        vec2 axis = clamp(0.5 + 0.6 * pixelRatio - abs(floorPoint) / max(slope, 1e-20), 0.0, 1.0);
        color = Over(vec4(0.87, 0.36, 0.34, 0.55 * axis.y * fade * gridOpacity), color);
        color = Over(vec4(0.33, 0.55, 0.92, 0.55 * axis.x * fade * gridOpacity), color);
    }
    if (color.a < 0.002) discard;
    fragment = color;
}
)";

double SizeOf(const AxisAlignedBoundingBox& box) {
    if (box.IsEmpty()) return 1.0;
    const double size = std::max({static_cast<double>(box.maxX) - box.minX,
                                  static_cast<double>(box.maxY) - box.minY,
                                  static_cast<double>(box.maxZ) - box.minZ});
    return std::isfinite(size) && size > 0.0 ? size : 1.0;
}

}  // namespace

BackdropPass::BackdropPass()
    : gl(CurrentGl()),
      background(MakeProgram(backgroundVertexShader, backgroundFragmentShader)),
      floor(MakeProgram(floorVertexShader, floorFragmentShader)) {
    gl.glGenVertexArrays(1, &vertexArray);
}

BackdropPass::~BackdropPass() { gl.glDeleteVertexArrays(1, &vertexArray); }

uint64_t BackdropPass::DrawBackground(const RenderSettings& settings, const RenderView& view) {
    background->bind();
    const auto set = [&](const char* name, const QColor& color) {
        background->setUniformValue(name,
                                    static_cast<float>(color.redF()),
                                    static_cast<float>(color.greenF()),
                                    static_cast<float>(color.blueF()));
    };
    set("bottom", settings.background[0]);
    set("top", settings.background[1]);
    background->setUniformValue(
        "size", static_cast<float>(view.width), static_cast<float>(view.height));
    gl.glDisable(GL_DEPTH_TEST);
    gl.glBindVertexArray(vertexArray);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    gl.glBindVertexArray(0);
    gl.glEnable(GL_DEPTH_TEST);
    return 1;
}

double BackdropPass::GridSpacing(const AxisAlignedBoundingBox& worldBox) {
    return std::pow(10.0, std::floor(std::log10(SizeOf(worldBox) * 0.99))) * 0.1;
}

double BackdropPass::FloorHeight(const AxisAlignedBoundingBox& worldBox) {
    if (worldBox.IsEmpty()) return 0.0;
    const double spacing = GridSpacing(worldBox);
    // A rounding error in the lowest vertex must not lower the floor by a whole grid interval.
    return std::floor(worldBox.minY / spacing + 0.05) * spacing;
}

uint64_t BackdropPass::DrawFloor(const RenderSettings& settings,
                                 const RenderView& view,
                                 const AxisAlignedBoundingBox& worldBox,
                                 float pixelRatio) {
    if (!settings.hasGrid && !settings.hasGround) return 0;
    const double size = SizeOf(worldBox);
    Vector centre;
    if (!worldBox.IsEmpty())
        centre = {
            (worldBox.minX + worldBox.maxX) * 0.5f, 0.0f, (worldBox.minZ + worldBox.maxZ) * 0.5f};
    centre.y = static_cast<float>(FloorHeight(worldBox));
    const auto extent = static_cast<float>(size * 4.0);
    floor->bind();
    SetUniform(*floor, "worldToClip", view.worldToClip);
    SetUniform(*floor, "centre", centre);
    floor->setUniformValue("middle", centre.x, centre.z);
    SetUniform(*floor, "extent", extent);
    SetUniform(*floor, "spacing", static_cast<float>(GridSpacing(worldBox)));
    SetUniform(*floor, "surfaceRadius", static_cast<float>(size * 0.5));
    SetUniform(*floor, "pixelRatio", pixelRatio);
    SetUniform(*floor, "gridOpacity", settings.hasGrid ? 1.0f : 0.0f);
    SetUniform(*floor, "groundOpacity", settings.hasGround ? 1.0f : 0.0f);

    // The view's near and far planes enclose the surface, not the floor.
    gl.glEnable(GL_DEPTH_CLAMP);
    gl.glDepthFunc(GL_LEQUAL);
    gl.glDepthMask(GL_FALSE);
    gl.glEnable(GL_BLEND);
    gl.glBindVertexArray(vertexArray);
    gl.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    gl.glBindVertexArray(0);
    gl.glDisable(GL_BLEND);
    gl.glDepthMask(GL_TRUE);
    gl.glDepthFunc(GL_LESS);
    gl.glDisable(GL_DEPTH_CLAMP);
    return 1;
}

}  // namespace trovik::studio
