// SPDX-License-Identifier: Apache-2.0
#include "framework/render/ImageRenderer.h"

#include "framework/jobs/JobPhase.h"
#include "framework/render/ToneCurve.h"

#include <tbb/parallel_for.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>

namespace trovik {

namespace {

constexpr uint32_t positionStream = 0;

/// Checkerboard squares per unit of texture space.
constexpr float checksPerUnit = 16.0f;

float Brightness(const Vector& color) { return color.x + color.y + color.z; }

Vector CavityColor(float curvature) {
    const Vector grey(0.30f, 0.295f, 0.285f);
    const float bounded = curvature / (1.0f + std::fabs(curvature));
    return grey * (bounded > 0.0f ? 1.0f - 0.88f * bounded : 1.0f - 1.5f * bounded);
}

Vector CheckerColor(float u, float v) {
    const int parity = static_cast<int>(std::floor(u * checksPerUnit)) +
                       static_cast<int>(std::floor(v * checksPerUnit));
    const Vector gradient(
        0.12f + 0.75f * (u - std::floor(u)), 0.12f + 0.75f * (v - std::floor(v)), 0.30f);
    return gradient * ((parity & 1) == 0 ? 1.0f : 0.55f);
}

}  // namespace

/// Sums over the samples of a pixel.
struct ImageRenderer::Sums {
    Pixel pixel;
    Vector normal;
    Vector position;
    float depth = 0.0f;
    float open = 0.0f;
    float ambientWeight = 0.0f;
    float visible = 0.0f;
    float keyWeight = 0.0f;
    float keyRays = 0.0f;
};

ImageRenderer::ImageRenderer(const EmbreeScene& shownScene,
                             const RenderCamera& camera,
                             const RenderOptions& pictureOptions,
                             JobControl* jobControl)
    : scene(shownScene),
      options(pictureOptions),
      job(jobControl),
      view(camera, options.width, options.height),
      shading(shownScene, view) {
    // Slightly in front of all meshes, so that rounding cannot move a ray's origin behind a
    // surface.
    if (view.IsOrthographic())
        nearest = scene.NearestDepth(view.Eye(), -view.Back()) - scene.Extent() * 1e-3f;
    if (options.shading == ShadingMode::Matcap)
        matcap.emplace(options.matcap.empty() ? Matcap::Names().front() : options.matcap);
}

// The image is rendered in bands to limit memory use. Each band includes the adjacent rows that the
// filter reads, so that the result does not depend on where bands start and end.
RenderImage ImageRenderer::Render(int pixelsPerBand) const {
    const int width = options.width;
    const int height = options.height;
    RenderImage picture{width, height, {}, {}};
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    picture.rgb.resize(count * 3);
    if (options.transparent) picture.alpha.resize(count);

    const int bandRows = std::max(filterReach * 4, pixelsPerBand / width);
    const std::thread::id caller = std::this_thread::get_id();
    std::vector<Pixel> pixels;
    std::vector<PixelGuide> guides;
    std::vector<PixelVisibility> visibilities;
    for (int first = 0; first < height; first += bandRows) {
        const int last = std::min(height, first + bandRows);
        const int above = std::max(0, first - filterReach);
        const int below = std::min(height, last + filterReach);
        const std::size_t held =
            static_cast<std::size_t>(below - above) * static_cast<std::size_t>(width);
        pixels.assign(held, {});
        guides.assign(held, {});
        visibilities.assign(held, {});
        const auto at = [&](int x, int y) {
            return static_cast<std::size_t>(y - above) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x);
        };
        JobPhase phase(job, "Rendering", held, 1);
        std::atomic<uint64_t> sampled{0};
        tbb::parallel_for(above, below, [&](int y) {
            const bool isCaller = std::this_thread::get_id() == caller;
            WireLines wires(scene, view);
            // Rendering a row can take a long time, so cancellation is checked at every pixel.
            for (int x = 0; x < width && !tbb::is_current_task_group_canceling(); ++x) {
                Sample(x, y, wires, pixels[at(x, y)], guides[at(x, y)], visibilities[at(x, y)]);
                ++sampled;
                if (isCaller) phase.Reach(sampled);
            }
        });
        phase.Finish();
        if (IsLit()) FilterVisibility(width, below - above, guides, visibilities, job);
        tbb::parallel_for(first, last, [&](int y) {
            for (int x = 0; x < width; ++x)
                Store(x, y, pixels[at(x, y)], visibilities[at(x, y)], picture);
        });
    }
    return picture;
}

void ImageRenderer::Sample(int x,
                           int y,
                           WireLines& wires,
                           Pixel& pixel,
                           PixelGuide& guide,
                           PixelVisibility& visibility) const {
    const int samples = std::max(1, options.samples);
    const PixelSamples points(x, y, samples);
    Sums sums;
    int hits = 0;
    for (int i = 0; i < samples; ++i) {
        const SamplePoint within = points.At(positionStream, i);
        const float pixelX = static_cast<float>(x) + within.x;
        const float pixelY = static_cast<float>(y) + within.y;
        const Vector direction = view.DirectionThrough(pixelX, pixelY);
        SurfaceSample sample;
        if (!scene.Hit(view.OriginThrough(pixelX, pixelY, nearest), direction, sample)) continue;
        ++hits;
        const float remaining = options.wireframe ? wires.Remaining(sample, pixelX, pixelY) : 1.0f;
        AddSample(sample, direction, remaining, points, i, sums);
    }
    if (hits == 0) return;
    const float share = 1.0f / static_cast<float>(hits);
    pixel.plain = sums.pixel.plain * share;
    pixel.albedo = sums.pixel.albedo * share;
    pixel.ambient = sums.pixel.ambient * share;
    pixel.key = sums.pixel.key * share;
    pixel.coverage = static_cast<float>(hits) / static_cast<float>(samples);
    if (!IsLit()) return;
    guide.normal = sums.normal.Normalized();
    guide.position = sums.position * share;
    guide.footprint = view.PixelSizeAt(sums.depth * share);
    visibility.opennessCount = static_cast<float>(hits);
    visibility.keyCount = sums.keyRays;
    if (sums.ambientWeight > 0.0f) visibility.openness = sums.open / sums.ambientWeight;
    if (sums.keyWeight > 0.0f) visibility.key = sums.visible / sums.keyWeight;
}

void ImageRenderer::AddSample(const SurfaceSample& sample,
                              const Vector& direction,
                              float remaining,
                              const PixelSamples& points,
                              int index,
                              Sums& sums) const {
    if (!IsLit()) {
        sums.pixel.plain += PlainColor(sample, -direction) * remaining;
        return;
    }
    const bool flat = options.shading == ShadingMode::Flat;
    const LitSample lit = shading.Light(sample, flat, -direction, points, index);
    const float ambientWeight = Brightness(lit.ambient);
    sums.pixel.albedo += lit.albedo;
    sums.pixel.ambient += lit.ambient * remaining;
    sums.pixel.key += lit.key * remaining;
    sums.open += lit.openness * ambientWeight;
    sums.ambientWeight += ambientWeight;
    sums.visible += lit.keyVisible * lit.keyWeight;
    sums.keyWeight += lit.keyWeight;
    if (lit.keyWeight > 0.0f) sums.keyRays += 1.0f;
    sums.normal += flat ? sample.faceNormal : sample.shadingNormal;
    sums.position += sample.position;
    sums.depth += (sample.position - view.Eye()) | -view.Back();
}

Vector ImageRenderer::PlainColor(const SurfaceSample& sample, const Vector& toEye) const {
    const RenderMesh& mesh = scene.Mesh(sample.mesh);
    const Vector& n = sample.shadingNormal;
    switch (options.shading) {
        case ShadingMode::Matcap: {
            // The normal is measured relative to the ray, so that a sphere looks the same
            // everywhere in the image.
            const Vector across = (view.Up() & toEye).Normalized();
            const Vector upwards = toEye & across;
            return FrozenTint(mesh, sample, matcap->At(n | across, n | upwards));
        }
        case ShadingMode::Cavity:
            return FrozenTint(mesh, sample, CavityColor(CurvatureAt(mesh, sample))) *
                   Shading::Headlight(sample, toEye);
        case ShadingMode::Normals:
            return Vector(n | view.Right(), n | view.Up(), n | view.Back()) * 0.5f +
                   Vector(0.5f, 0.5f, 0.5f);
        case ShadingMode::Uv: {
            float u = 0.0f;
            float v = 0.0f;
            const bool hasUv = UvAt(mesh, sample, u, v);
            return (hasUv ? CheckerColor(u, v) : Vector(0.2f, 0.2f, 0.2f)) *
                   Shading::Headlight(sample, toEye);
        }
        case ShadingMode::VertexColors:
            return VertexColorAt(mesh, sample) * Shading::Headlight(sample, toEye);
        case ShadingMode::Clay:
        case ShadingMode::Flat:
            break;
    }
    return {};
}

void ImageRenderer::Store(int x,
                          int y,
                          const Pixel& pixel,
                          const PixelVisibility& visibility,
                          RenderImage& picture) const {
    Vector color = pixel.plain;
    if (IsLit())
        color = Shading::Combine(
            pixel.albedo, pixel.ambient, pixel.key, visibility.openness, visibility.key);
    const bool isCoded =
        options.shading == ShadingMode::Normals || options.shading == ShadingMode::VertexColors;
    if (!options.transparent) {
        const float fromTop = (static_cast<float>(y) + 0.5f) / static_cast<float>(options.height);
        Vector behind = Shading::Backdrop(1.0f - fromTop);
        if (isCoded) behind = Vector(Coded(behind.x), Coded(behind.y), Coded(behind.z));
        color = color * pixel.coverage + behind * (1.0f - pixel.coverage);
    }
    const std::size_t at = static_cast<std::size_t>(y) * static_cast<std::size_t>(options.width) +
                           static_cast<std::size_t>(x);
    uint8_t* out = picture.rgb.data() + at * 3;
    const float channels[3] = {color.x, color.y, color.z};
    for (const float channel : channels) *out++ = ToByte(isCoded ? channel : Coded(channel));
    if (options.transparent) picture.alpha[at] = ToByte(pixel.coverage);
}

}  // namespace trovik
