// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"
#include "host/Matrix.h"

namespace trovik {

class Camera;
class Geometry;

enum HUDMessageType : int { HUDMessageInfo = 0, HUDMessageWarning = 1 };
enum LayerUIType : int { LayerUISculpt = 0 };

/// What a plug-in may ask of the user interface.
class TROVIK_API Interface {
public:
    virtual ~Interface();
    /// Shows a message over the viewport.
    virtual void HUDMessageShow(const QString& text, HUDMessageType type) = 0;
    /// Switches the layer panel.
    virtual void ActivateLayerSystem(LayerUIType type) = 0;
};

/// Where a geometry or a camera stands in the world. Row-vector convention.
class TROVIK_API Transformation {
public:
    /// out = ((x row0 + y row1) + z row2) + w row3 of the local-to-world matrix.
    virtual void LocalToWorld(Vector* out, const Vector* in, float w) const = 0;
    /// The same with the inverse matrix.
    virtual void WorldToLocal(Vector* out, const Vector* in, float w) const = 0;
    virtual void LocalToWorldMatrix(Matrix* out) const = 0;
    /// Factors along the local axes.
    virtual void Scale(Vector* out) const = 0;
    virtual ~Transformation();
};

/// Something with a place in the world.
class TROVIK_API Placed {
public:
    virtual trovik::Transformation* Transformation() const = 0;
    virtual ~Placed();
};

/// The viewer. It looks along its local -z axis with +y up.
class TROVIK_API Camera : public virtual Placed {};

class TROVIK_API Scene {
public:
    virtual unsigned GeometryCount() const = 0;
    virtual Geometry* GeometryAt(unsigned index) const = 0;
    virtual void SetActiveCamera(Camera* camera) = 0;
    /// Never null.
    virtual Camera* ActiveCamera() const = 0;
    virtual ~Scene();
};

/// The one process-wide instance of the host.
class TROVIK_API Kernel : public Node {
public:
    Kernel();
    ~Kernel() override;

    virtual trovik::Interface* Interface() = 0;
    virtual trovik::Scene* Scene() = 0;
    /// True while the host runs its automated test mode, which shows preferences and behaviours
    /// that are meant for tuning.
    virtual bool IsTestModeOn() const = 0;

    /// One bit per guarded function that is now on the stack; see TVCrashReporterFlag.
    uint32_t crashFlags = 0;
    /// Commands as words; nodes may connect a text attribute to it.
    AttributeInstance<QString> kernelCommandAttribute;
};

TROVIK_API extern Kernel* g_pKernel;

/// Scope guard that every public entry point of a plug-in opens, so that a crash report shows which
/// functions were on the stack. Adds `bit` to the kernel's counter and takes it off again.
class TROVIK_API TVCrashReporterFlag {
public:
    TVCrashReporterFlag(uint32_t flagKind, uint32_t flagBit) : kind(flagKind), bit(flagBit) {
        g_pKernel->crashFlags += bit;
    }
    ~TVCrashReporterFlag();
    TVCrashReporterFlag(const TVCrashReporterFlag&) = delete;
    TVCrashReporterFlag& operator=(const TVCrashReporterFlag&) = delete;

private:
    /// Part of the layout that crash reports read; nothing here reads it.
    [[maybe_unused]] uint32_t kind;
    uint32_t bit;
};
static_assert(sizeof(TVCrashReporterFlag) == 8);

}  // namespace trovik
