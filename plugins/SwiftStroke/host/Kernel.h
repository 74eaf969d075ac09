// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"
#include "host/Matrix.h"

namespace trovik {

class Camera;
class Geometry;

enum HUDMessageType : int { HUDMessageInfo = 0, HUDMessageWarning = 1 };
enum LayerUIType : int { LayerUISculpt = 0 };

/// User interface functions that a plug-in may call.
class TROVIK_API Interface {
public:
    virtual ~Interface();
    /// Shows a message over the viewport.
    virtual void HUDMessageShow(const QString& text, HUDMessageType type) = 0;
    /// Switches the layer panel to the given layer type.
    virtual void ActivateLayerSystem(LayerUIType type) = 0;
};

/// The transform of a geometry or a camera between local and world space. Row-vector convention.
class TROVIK_API Transformation {
public:
    /// out = ((x row0 + y row1) + z row2) + w row3 of the local-to-world matrix.
    virtual void LocalToWorld(Vector* out, const Vector* in, float w) const = 0;
    /// Applies the inverse matrix in the same way.
    virtual void WorldToLocal(Vector* out, const Vector* in, float w) const = 0;
    virtual void LocalToWorldMatrix(Matrix* out) const = 0;
    /// Scale factors along the local axes.
    virtual void Scale(Vector* out) const = 0;
    virtual ~Transformation();
};

/// An object with a transform.
class TROVIK_API Placed {
public:
    virtual trovik::Transformation* Transformation() const = 0;
    virtual ~Placed();
};

/// A camera. It looks along its local -z axis, with +y up.
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

/// The host. There is one instance per process.
class TROVIK_API Kernel : public Node {
public:
    Kernel();
    ~Kernel() override;

    virtual trovik::Interface* Interface() = 0;
    virtual trovik::Scene* Scene() = 0;
    /// True while the host is in its automated test mode, which enables additional preferences and
    /// behaviours for tuning.
    virtual bool IsTestModeOn() const = 0;

    /// Sum of the bits of all guarded functions currently on the stack; see TVCrashReporterFlag.
    uint32_t crashFlags = 0;
    /// Receives commands as text. Nodes may connect a string attribute to this attribute.
    AttributeInstance<QString> kernelCommandAttribute;
};

TROVIK_API extern Kernel* g_pKernel;

/// Scope guard for each public entry point of a plug-in. For crash reports, it records which
/// functions are on the stack: it adds `bit` to Kernel::crashFlags and subtracts it at the end of
/// the scope.
class TROVIK_API TVCrashReporterFlag {
public:
    TVCrashReporterFlag(uint32_t flagKind, uint32_t flagBit) : kind(flagKind), bit(flagBit) {
        g_pKernel->crashFlags += bit;
    }
    ~TVCrashReporterFlag();
    TVCrashReporterFlag(const TVCrashReporterFlag&) = delete;
    TVCrashReporterFlag& operator=(const TVCrashReporterFlag&) = delete;

private:
    /// This member is not used here, but it is part of the layout that crash reporters read.
    [[maybe_unused]] uint32_t kind;
    uint32_t bit;
};
static_assert(sizeof(TVCrashReporterFlag) == 8);

}  // namespace trovik
