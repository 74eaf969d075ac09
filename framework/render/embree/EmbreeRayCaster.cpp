// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/modules/ModuleEntry.h"
#include "framework/render/RayCaster.h"

#include <embree3/rtcore.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace trovik {

namespace {

struct ReleaseDevice {
    void operator()(RTCDevice device) const { rtcReleaseDevice(device); }
};
struct ReleaseScene {
    void operator()(RTCScene scene) const { rtcReleaseScene(scene); }
};
struct ReleaseGeometry {
    void operator()(RTCGeometry geometry) const { rtcReleaseGeometry(geometry); }
};
using Device = std::unique_ptr<RTCDeviceTy, ReleaseDevice>;
using Scene = std::unique_ptr<RTCSceneTy, ReleaseScene>;
using Geometry = std::unique_ptr<RTCGeometryTy, ReleaseGeometry>;

[[noreturn]] void ThrowRayError(RTCError code, const char* text) {
    if (code == RTC_ERROR_OUT_OF_MEMORY) throw HostError("not enough memory for the render");
    throw HostError("cannot render: the ray tracing library reports error " + std::to_string(code) +
                    ": " + text);
}

/// The first error of a device. The library reports errors from any of its threads.
class FirstError {
public:
    static void Report(void* self, RTCError code, const char* text) {
        static_cast<FirstError*>(self)->Keep(code, text);
    }

    RTCError Code() {
        const std::scoped_lock lock(guard);
        return first;
    }

    void ThrowIfAny() {
        const std::scoped_lock lock(guard);
        if (first != RTC_ERROR_NONE) ThrowRayError(first, message);
    }

private:
    void Keep(RTCError code, const char* text) {
        const std::scoped_lock lock(guard);
        if (first != RTC_ERROR_NONE) return;
        first = code;
        if (text != nullptr) std::strncpy(message, text, sizeof message - 1);
    }

    std::mutex guard;
    RTCError first = RTC_ERROR_NONE;
    /// Not a std::string, because memory may be exhausted when the message is stored.
    char message[256] = "";
};

/// Forwards the library's progress. The library may call it on any of its threads.
class BuildMonitor {
public:
    explicit BuildMonitor(JobControl* job) : phase(job, "Building the ray tree", steps, 1) {}

    /// \return false to cancel.
    static bool Ask(void* self, double fraction) {
        return static_cast<BuildMonitor*>(self)->Go(fraction);
    }
    bool IsCancelled() const { return cancelled; }
    void Finish() { phase.Finish(); }

private:
    static constexpr uint64_t steps = 1000;

    bool Go(double fraction) {
        // Exceptions must not propagate through the library.
        try {
            if (std::this_thread::get_id() == caller)
                phase.Reach(static_cast<uint64_t>(fraction * static_cast<double>(steps)));
        } catch (const Cancelled&) {
            cancelled = true;
        }
        return !cancelled;
    }

    JobPhase phase;
    std::thread::id caller = std::this_thread::get_id();
    std::atomic<bool> cancelled{false};
};

/// Returns whether the library accepts the ray; for other rays, its assertions terminate the
/// process.
bool IsValid(const Vector& origin, const Vector& direction) {
    constexpr float limit = RayCaster::maxCoordinate;
    return std::fabs(origin.x) <= limit && std::fabs(origin.y) <= limit &&
           std::fabs(origin.z) <= limit && std::fabs(direction.x) <= limit &&
           std::fabs(direction.y) <= limit && std::fabs(direction.z) <= limit;
}

RTCRay MakeRay(const Vector& origin, const Vector& direction, float distance) {
    RTCRay ray{};
    ray.org_x = origin.x;
    ray.org_y = origin.y;
    ray.org_z = origin.z;
    ray.dir_x = direction.x;
    ray.dir_y = direction.y;
    ray.dir_z = direction.z;
    ray.tfar = distance;
    ray.mask = 0xffffffffu;
    return ray;
}

class EmbreeRayCaster final : public RayCaster {
public:
    EmbreeRayCaster(const std::vector<RayMesh>& meshes, JobControl* job);
    bool Hit(const Vector& origin, const Vector& direction, RayHit& hit) const override;
    bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const override;
    RayBounds Bounds() const override;

private:
    void Attach(const RayMesh& mesh, unsigned id);

    /// Declared before the device, which reports errors here until it is destroyed.
    FirstError error;
    Device device;
    Scene scene;
};

EmbreeRayCaster::EmbreeRayCaster(const std::vector<RayMesh>& meshes, JobControl* job)
    // A cache size of 0 avoids the 128 MiB that the library reserves for subdivision surfaces,
    // which are not used.
    : device(rtcNewDevice("set_affinity=0,tessellation_cache_size=0")) {
    // If the device could not be created, the error is queried without one.
    if (device == nullptr) ThrowRayError(rtcGetDeviceError(nullptr), "no device");
    rtcSetDeviceErrorFunction(device.get(), &FirstError::Report, &error);
    scene.reset(rtcNewScene(device.get()));
    error.ThrowIfAny();
    for (std::size_t i = 0; i < meshes.size(); ++i) Attach(meshes[i], static_cast<unsigned>(i));
    rtcSetSceneFlags(scene.get(), RTC_SCENE_FLAG_ROBUST);
    BuildMonitor monitor(job);
    rtcSetSceneProgressMonitorFunction(scene.get(), &BuildMonitor::Ask, &monitor);
    rtcCommitScene(scene.get());
    rtcSetSceneProgressMonitorFunction(scene.get(), nullptr, nullptr);
    if (monitor.IsCancelled()) throw Cancelled();
    // A scene whose tasks could not be started still contains these tasks, and its destructor would
    // terminate the process. The scene is leaked instead.
    if (error.Code() == RTC_ERROR_UNKNOWN) static_cast<void>(scene.release());
    error.ThrowIfAny();
    monitor.Finish();
}

void EmbreeRayCaster::Attach(const RayMesh& mesh, unsigned id) {
    const bool quads = mesh.cornersPerFace == 4;
    const Geometry geometry(
        rtcNewGeometry(device.get(), quads ? RTC_GEOMETRY_TYPE_QUAD : RTC_GEOMETRY_TYPE_TRIANGLE));
    error.ThrowIfAny();
    rtcSetSharedGeometryBuffer(geometry.get(),
                               RTC_BUFFER_TYPE_VERTEX,
                               0,
                               RTC_FORMAT_FLOAT3,
                               mesh.positions,
                               0,
                               3 * sizeof(float),
                               mesh.vertexCount);
    rtcSetSharedGeometryBuffer(geometry.get(),
                               RTC_BUFFER_TYPE_INDEX,
                               0,
                               quads ? RTC_FORMAT_UINT4 : RTC_FORMAT_UINT3,
                               mesh.faceVertexIndices,
                               0,
                               mesh.cornersPerFace * sizeof(uint32_t),
                               mesh.faceCount);
    rtcCommitGeometry(geometry.get());
    rtcAttachGeometryByID(scene.get(), geometry.get(), id);
    error.ThrowIfAny();
}

bool EmbreeRayCaster::Hit(const Vector& origin, const Vector& direction, RayHit& hit) const {
    if (!IsValid(origin, direction)) return false;
    RTCRayHit found{};
    found.ray = MakeRay(origin, direction, std::numeric_limits<float>::infinity());
    found.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    rtcIntersect1(scene.get(), &context, &found);
    if (found.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
    hit = {found.hit.geomID,
           found.hit.primID,
           found.hit.u,
           found.hit.v,
           found.ray.tfar,
           Vector(found.hit.Ng_x, found.hit.Ng_y, found.hit.Ng_z)};
    return true;
}

bool EmbreeRayCaster::IsBlocked(const Vector& origin,
                                const Vector& direction,
                                float distance) const {
    if (!IsValid(origin, direction) || !(distance >= 0.0f)) return false;
    RTCRay ray = MakeRay(origin, direction, distance);
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    rtcOccluded1(scene.get(), &context, &ray);
    return ray.tfar < 0.0f;
}

RayBounds EmbreeRayCaster::Bounds() const {
    RTCBounds box;
    rtcGetSceneBounds(scene.get(), &box);
    return {Vector(box.lower_x, box.lower_y, box.lower_z),
            Vector(box.upper_x, box.upper_y, box.upper_z)};
}

class EmbreeLibrary final : public RayLibrary {
public:
    std::unique_ptr<RayCaster> MakeCaster(const std::vector<RayMesh>& meshes,
                                          JobControl* job) const override {
        return std::make_unique<EmbreeRayCaster>(meshes, job);
    }
};

}  // namespace

}  // namespace trovik

const void* trovikModule(const char* libraryVersion) {
    static const trovik::EmbreeLibrary library;
    const trovik::RayLibrary* interface = &library;
    return std::strcmp(libraryVersion, TROVIK_MODULE_VERSION) == 0 ? interface : nullptr;
}
