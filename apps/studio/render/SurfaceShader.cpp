// SPDX-License-Identifier: Apache-2.0
#include "render/SurfaceShader.h"

namespace trovik::studio {

const char* const surfaceVertexShader = R"(
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in float freeze;
layout(location = 3) in uint flags;

uniform mat4 localToClip;
uniform mat4 localToWorld;
uniform mat4 worldToView;
uniform mat4 normalToView;
uniform int gridSide;

out vec3 worldPosition;
out vec3 viewPosition;
// Otherwise, attributes at edge pixels of steep triangles are extrapolated far outside the
// triangle.
centroid out vec3 viewNormal;
flat out uint faceFlags;
#ifdef CAVITY
out vec3 bentNormal;
#endif
#ifdef MASK
centroid out float mask;
#endif
#ifdef RINGS
centroid out vec3 coveredPosition;
#endif
#ifdef WIRE
out vec2 cell;
#endif
#ifdef PLANES
out vec3 localPosition;
centroid out vec3 coveredLocal;
#endif

void main() {
    vec4 world = localToWorld * vec4(position, 1.0);
    worldPosition = world.xyz;
    viewPosition = (worldToView * world).xyz;
    viewNormal = mat3(normalToView) * normal;
    faceFlags = flags;
#ifdef CAVITY
    bentNormal = viewNormal;
#endif
#ifdef RINGS
    coveredPosition = worldPosition;
#endif
#ifdef MASK
    mask = freeze / 127.0;
#endif
#ifdef WIRE
    int inPatch = gl_VertexID % (gridSide * gridSide);
    cell = vec2(inPatch % gridSide, inPatch / gridSide);
#endif
#ifdef PLANES
    localPosition = position;
    coveredLocal = position;
#endif
    gl_Position = localToClip * vec4(position, 1.0);
}
)";

const char* const surfaceFragmentShader = R"(
in vec3 worldPosition;
in vec3 viewPosition;
centroid in vec3 viewNormal;
flat in uint faceFlags;
#ifdef MASK
centroid in float mask;
#endif
#ifdef WIRE
in vec2 cell;
uniform float wireStride;
uniform int wireLevels;
#endif
#ifdef PLANES
in vec3 localPosition;
centroid in vec3 coveredLocal;
uniform vec3 planes;
#endif
#ifdef CAVITY
in vec3 bentNormal;
uniform float cavity;
#endif
#ifdef RINGS
centroid in vec3 coveredPosition;
uniform vec4 rings[33];
uniform vec3 ringColors[33];
uniform int ringCount;
uniform float falloffStrength;
uniform sampler2D falloff;
#endif
#ifdef GROUPS
uniform vec3 groupColors[128];
#endif
uniform sampler2D matcap;
uniform float pixelRatio;

layout(location = 0) out vec4 fragment;

// Framebuffers store encoded colours; highlights roll off smoothly to white.
vec3 Encoded(vec3 linear) {
    vec3 soft = 1.0 - exp(-1.3 * max(linear, 0.0));
    return mix(12.92 * soft,
               1.055 * pow(soft, vec3(1.0 / 2.4)) - 0.055,
               step(0.0031308, soft));
}

// Coverage of a line where a value is zero. `pixels` is the distance from it.
float Line(float pixels, float width) {
    return clamp(0.5 + width * 0.5 - pixels, 0.0, 1.0);
}

// Distance in pixels from where a value is zero. \param value  within the covered part of the pixel;
// `smoothed` has the derivatives.
float PixelsFrom(float value, float smoothed) {
    return abs(value) / max(length(vec2(dFdx(smoothed), dFdy(smoothed))), 1e-20);
}

void main() {
    if ((faceFlags & 1u) != 0u) discard;
#ifdef ORTHOGRAPHIC
    vec3 toEye = vec3(0.0, 0.0, 1.0);
#else
    vec3 toEye = normalize(-viewPosition);
#endif
#ifdef FLAT
    vec3 n = normalize(cross(dFdx(viewPosition), dFdy(viewPosition)));
#else
    vec3 n = normalize(viewNormal);
    if (!gl_FrontFacing) n = -n;
#endif
    vec3 right = normalize(vec3(toEye.z, 0.0, -toEye.x));
    vec3 up = cross(toEye, right);
    float facing = dot(n, toEye);
    vec2 at = vec2(dot(n, right), dot(n, up));
    // An interpolated normal may face away at a silhouette.
    if (facing < 0.0) at = normalize(at);
    vec3 color = texture(matcap, at * 0.5 + 0.5).rgb;

#ifdef CAVITY
    // Screen-space divergence of the normal: 2 / radius, in pixels, for a sphere seen from the
    // front. Limited, and fading toward silhouettes, where it grows without bound.
    vec3 bent = normalize(bentNormal) * (gl_FrontFacing ? 1.0 : -1.0);
    float bend = (dFdx(bent).x + dFdy(bent).y) * pixelRatio;
    bend = bend * 9.0 * smoothstep(0.05, 0.5, facing);
    bend = bend / (1.0 + abs(bend));
    color *= 1.0 + cavity * (bend < 0.0 ? 0.9 : 0.55) * bend;
#endif
#ifdef GROUPS
    color *= groupColors[faceFlags >> 1u];
#endif
#ifdef MASK
    color = mix(color, color * vec3(0.21, 0.22, 0.27) + vec3(0.006, 0.007, 0.012), mask);
#endif
    vec3 shown = Encoded(color);

#ifdef WIRE
    float wire = 0.0;
    float spacing = wireStride;
    for (int level = 0; level < wireLevels; ++level) {
        vec2 scaled = cell / spacing;
        vec2 slope = vec2(length(vec2(dFdx(scaled.x), dFdy(scaled.x))),
                          length(vec2(dFdx(scaled.y), dFdy(scaled.y))));
        vec2 pixels = abs(fract(scaled + 0.5) - 0.5) / max(slope, 1e-20);
        // Lines only a few pixels apart would just make the surface grey.
        vec2 visible = 1.0 - smoothstep(0.12, 0.34, slope * pixelRatio);
        float weight = level == 0 ? 0.42 : 0.42 + 0.06 * float(level);
        vec2 covered = visible * vec2(Line(pixels.x, pixelRatio), Line(pixels.y, pixelRatio));
        wire = max(wire, weight * max(covered.x, covered.y));
        spacing *= 2.0;
    }
    shown = mix(shown, vec3(0.02, 0.025, 0.035), wire);
#endif
#ifdef PLANES
    const vec3 axisColors[3] = vec3[](
        vec3(0.93, 0.36, 0.32), vec3(0.52, 0.80, 0.30), vec3(0.33, 0.58, 0.96));
    for (int axis = 0; axis < 3; ++axis)
        if (planes[axis] > 0.5) {
            float pixels = PixelsFrom(coveredLocal[axis], localPosition[axis]);
            shown = mix(shown, axisColors[axis], 0.75 * Line(pixels, 1.25 * pixelRatio));
        }
#endif
#ifdef RINGS
    for (int i = 0; i < ringCount; ++i) {
        float away = length(coveredPosition - rings[i].xyz);
        float pixels = PixelsFrom(away - rings[i].w, length(worldPosition - rings[i].xyz));
        float strength = (i == 0 ? 1.0 : 0.6) * smoothstep(0.0, 0.12, abs(facing));
        if (i == 0 && away < rings[i].w) {
            float value = texture(falloff, vec2(away / rings[i].w, 0.5)).r;
            shown = mix(shown, ringColors[i], falloffStrength * value);
        }
        // A dark edge keeps the ring visible on light surfaces.
        shown = mix(shown, vec3(0.0), strength * 0.42 * Line(pixels, 3.5 * pixelRatio));
        shown = mix(shown, ringColors[i], strength * Line(pixels, 1.5 * pixelRatio));
    }
#endif
    fragment = vec4(shown, 1.0);
}
)";

const char* const edgeVertexShader = R"(
layout(location = 0) in vec3 position;
uniform mat4 localToClip;
void main() {
    gl_Position = localToClip * vec4(position, 1.0);
    // Offset toward the eye, so that the faces next to a line do not cover it.
    gl_Position.z -= 2e-4 * gl_Position.w;
}
)";

const char* const edgeFragmentShader = R"(
layout(location = 0) out vec4 fragment;
void main() { fragment = vec4(0.02, 0.025, 0.035, 0.6); }
)";

const char* const idVertexShader = R"(
layout(location = 0) in vec3 position;
layout(location = 3) in uint flags;
uniform mat4 localToClip;
uniform uint firstVertex;
uniform vec3 depthAxis;
uniform float depthAtOrigin;
flat out uint vertexNumber;
flat out uint faceFlags;
out float depth;
void main() {
    gl_Position = localToClip * vec4(position, 1.0);
    vertexNumber = firstVertex + uint(gl_VertexID);
    faceFlags = flags;
    depth = dot(position, depthAxis) + depthAtOrigin;
}
)";

const char* const idFragmentShader = R"(
flat in uint vertexNumber;
flat in uint faceFlags;
in float depth;
layout(location = 0) out uvec2 fragment;
void main() {
    if ((faceFlags & 1u) != 0u) discard;
    fragment = uvec2(vertexNumber, floatBitsToUint(depth));
}
)";

}  // namespace trovik::studio
