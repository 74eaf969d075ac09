// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Image.h"
#include "host/Mesh.h"

#include <memory>

namespace trovik {

class BrushConfiguration;

/// Process-wide switch for the facing falloff, which depends on the angle between the surface
/// normal and the view direction. The panel shows it in one row with the two angles
/// (BrushOperation::facingAngleStart and facingAngleRange).
class TROVIK_API CheckableFloatArray {
public:
    static bool s_bActive;
};

enum class PredefinedCategory : int { Paint = 0, Sculpt = 1 };

/// One tool in the tool tray: a brush class, and the tool's ID within that class.
class TROVIK_API BrushConfiguration {
public:
    BrushConfiguration(const ClassDesc* brushClass,
                       uint32_t id,
                       const QString& name,
                       const QString& displayName,
                       PredefinedCategory category,
                       const QString& toolTip,
                       int flags);
    ~BrushConfiguration();

    const ClassDesc* BrushClass() const { return brushClass; }
    uint32_t ID() const { return id; }
    /// The name used in scripts and files; not translated.
    const QString& Name() const { return name; }
    /// The name shown in the user interface; translated.
    const QString& DisplayName() const { return displayName; }
    PredefinedCategory Category() const { return category; }
    /// Rich text, translated.
    const QString& ToolTip() const { return toolTip; }
    int Flags() const { return flags; }

private:
    const ClassDesc* brushClass;
    uint32_t id;
    QString name, displayName;
    PredefinedCategory category;
    QString toolTip;
    int flags;
};

/// A tool's stamp and how dabs apply it.
class TROVIK_API StampConfiguration {
public:
    StampConfiguration();
    ~StampConfiguration();

    /// Path of the image file; empty if there is none.
    QString path;
    /// Whether the stamp is used.
    bool enabled = false;
    /// Range of each dab's random stamp rotation, as a fraction of a full turn (0 to 1).
    float randomTurn = 0.0f;
    /// Whether each dab applies the stamp with a random position, size and rotation.
    bool randomize = false;
};

/// A brush's mirror settings.
class TROVIK_API MirrorConfiguration {
public:
    enum Mode : int { Off = 0, PlaneX = 1, PlaneY = 2, PlaneZ = 3, Topological = 7 };

    int MirrorMode() const { return mode; }
    void SetMirrorMode(int newMode) { mode = newMode; }
    /// Sets the matrix that maps mesh-local points around the main hit to those around the current
    /// mirrored hit.
    void SetPointMap(const Matrix& map) { pointMap = map; }
    const Matrix& PointMap() const { return pointMap; }
    /// Applies the point map to (p, w), in mesh-local coordinates and without a perspective
    /// division. `hit` is the mirrored hit.
    Vector Transform(const Vector& p, float w, const SurfacePoint* hit) const;

private:
    int mode = Off;
    Matrix pointMap;
};

/// An interactive operation that is controlled with the pointer.
class TROVIK_API Operation : public Node {
public:
    /// Performs the operation once with its effect inverted. The base class does nothing.
    virtual void ExecuteAndInvert();
};

/// The `mask` argument that selects the brush's stamp.
inline constexpr int stampMask = -1;

/// Base class of all brushes: contains the settings and their attributes, the stamp, the tools, and
/// the stroke functions that the host's stroke loop calls.
///
/// A stroke consists of one BeginStroke, one ApplyDab for each hit, and one EndStroke. The order of
/// the virtual functions is part of the binary interface. Unless stated otherwise, the base class's
/// getters and setters return and store the setting, and all functions are called on the host's
/// main thread. A `mask` argument is stampMask for the brush's stamp, or 1 for the additional stamp
/// lookup at the mirror vertex. There are no other masks.
class TROVIK_API BrushOperation : public Operation {
public:
    /// The modifier key that is held at the start of a stroke. ModifierSmooth replaces the tool
    /// with Smooth for the stroke; ModifierInvert inverts the effect of the stroke.
    enum Modifier : int { ModifierNone = 0, ModifierSmooth = 1, ModifierInvert = 2 };
    /// 0 for a sculpting stroke; any other value for a gesture that does not sculpt.
    enum TriggerType : int { TriggerStroke = 0, TriggerOther = 1 };

    BrushOperation();
    ~BrushOperation() override;

    /// Returns how a stroke places dabs. 0 (the default): dabs along the path. 1: one dab that is
    /// centred on the press point and grows with the distance to the pointer. 2: one dab whose
    /// diameter extends from the press point to the pointer.
    virtual int StrokeDrawMode() const;
    /// Returns whether the brush size is measured in screen space. False by default.
    virtual bool IsScreenSpace() const;
    /// Returns the brush size, 0 to MaxBrushSize(). All tools of a brush share it.
    virtual float BrushSize() const;
    /// Returns the brush strength in percent, 0 to MaxBrushStrength().
    virtual float BrushStrength() const;
    /// Sets the brush size, clamped to [0, MaxBrushSize()]; NaN becomes 0.
    virtual void SetBrushSize(float size);
    /// Sets the brush strength in percent, clamped to [0, MaxBrushStrength()]; NaN becomes 0.
    virtual void SetBrushStrength(float strength);
    /// Returns the brush size at a pressure of 0 to 1. If strokeOptionD is set, the size is
    /// multiplied by (1 - b) * pressure + b, where b is BrushSizeBias() / 100.
    virtual float EffectiveBrushSize(float pressure) const;
    /// Returns the brush strength at a pressure of 0 to 1. If PressureControlsBrushStrength()
    /// returns true, pressure scales the strength in the same way as EffectiveBrushSize scales the
    /// size, but with BrushStrengthBias().
    virtual float EffectiveBrushStrength(float pressure) const;
    /// Returns the pressure-independent part of the size, in percent.
    virtual float BrushSizeBias() const;
    /// Returns the pressure-independent part of the strength, in percent.
    virtual float BrushStrengthBias() const;
    /// Returns the upper limit of the brush size, 100 by default.
    virtual float MaxBrushSize() const;
    /// Returns the upper limit of the brush strength, 100 by default.
    virtual float MaxBrushStrength() const;
    /// Returns whether the path of a stroke is smoothed.
    virtual bool UsesStrokeSmoothing() const;
    /// Returns the length over which the path is smoothed, as a fraction of the viewport height.
    virtual float StrokeSmoothingDistance() const;
    /// Sets whether the path is smoothed, and the smoothing length, without notifying the owner.
    virtual void SetStrokeSmoothing(bool on, float distance);
    /// Returns whether the brush draws its own cursor. False by default.
    virtual bool HasCustomCursor() const;
    /// Returns whether the stabiliser (lazy brush) is on: dabs then trail the pointer at a
    /// distance.
    virtual bool UsesSteadyStroke() const;
    /// Returns the distance at which dabs trail the pointer, as a fraction of the viewport height.
    virtual float SteadyStrokeDistance() const;
    /// Sets whether the stabiliser is on, and its distance, without notifying the owner.
    virtual void SetSteadyStroke(bool on, float distance);
    /// Sets how the size of a stamp is derived from its image. Ignored by the base class.
    virtual void SetStampSizingMode(int mode);
    /// Returns the name of the current falloff curve; "custom" for user-defined samples.
    virtual QString Falloff() const;
    /// Selects a falloff curve by name. An unknown name has no effect.
    virtual void SetFalloff(const QString& name);
    /// Returns the samples of the falloff curve from the centre to the rim. The array may be
    /// borrowed until the end of the stroke.
    virtual const Store<float>& FalloffData() const;
    /// Returns CheckableFloatArray::s_bActive.
    virtual bool UsesFalloffBasedOnFacingAngle() const;
    /// Configures the facing falloff. `on` is process-wide; `start` and `range`, in degrees, are
    /// stored in facingAngleStart and facingAngleRange.
    virtual void SetFalloffBasedOnFacingAngle(bool on, float start, float range);
    /// Returns the stamp's StampConfiguration::randomize.
    virtual bool UsesStampRandomize() const;
    /// Sets the stamp's StampConfiguration::randomize.
    virtual void SetStampRandomize(bool on);

    /// Returns whether the mask is used. Mask 1 is used if topological mirroring is on and the
    /// stamp is not a vector displacement map.
    virtual bool IsMaskEnabled(int mask) const;
    /// Returns the image of the mask. Never null: if there is no image, it has width 0.
    virtual Image* MaskImage(int mask) const;
    /// Returns the projective matrix that maps mesh-local positions to stamp pixels for the current
    /// dab.
    virtual Matrix MaskMatrix(int mask) const;
    /// Returns whether the mask is inverted. If o is MaskOffset(mask), a mask value v is read as (1
    /// - v) + o if the mask is inverted, otherwise as v - o.
    virtual bool IsMaskInverted(int mask) const;
    /// Returns the factor that is applied to all mask values, 1 by default. Brushes call this
    /// function for every dab.
    virtual float MaskFactor(int mask) const;
    /// Returns whether the mask is tiled in both directions.
    virtual bool IsMaskTiled(int mask) const;
    /// Returns the file name of the mask. A name that contains ".vdm" or "_vdm" marks a vector
    /// displacement map.
    virtual QString MaskName(int mask) const;
    /// Returns whether the weight that is added to a vertex's build-up includes the mask.
    virtual bool MaskBuildUp(int mask) const;
    /// Returns the opacity image of the mask. The base class has none and returns an image with
    /// width 0.
    virtual Image* MaskOpacityImage(int mask) const;
    /// Returns the value that is subtracted from the mask values; see IsMaskInverted.
    virtual float MaskOffset(int mask) const;
    /// Called after the mask's path has been set. Updates the name and, if the image is already in
    /// memory, the image. Otherwise, the host loads the image.
    virtual void OnMaskChanged(int mask);

    /// Returns the rate at which repeated dabs in one stroke add up, 1 by default.
    virtual float BuildUpRate() const;
    /// Returns whether the current tool places only one copy of the stamp per stroke. False by
    /// default.
    virtual bool IsImprintTool() const;
    /// Returns true unless the current tool is an imprint tool. True by default.
    virtual bool NonImprintQueryA() const;
    /// Returns whether pressure affects the strength (strokeOptionC).
    virtual bool PressureControlsBrushStrength() const;
    /// Returns whether the current stroke was started with ModifierInvert.
    virtual bool IsInverted() const;
    /// Returns whether the stamp lies in the tangent plane of the surface; otherwise, it is
    /// projected from the active camera.
    virtual bool IsOrientedToSurface() const;
    /// Sets whether the stamp lies in the tangent plane of the surface.
    virtual void SetOrientedToSurface(bool on);
    /// Returns true unless the current tool is an imprint tool. True by default.
    virtual bool NonImprintQueryB() const;
    /// Called by the brush with the direction of the current dab, mesh-local, for display at the
    /// cursor. Not called if every vertex moves along its own normal.
    virtual void SetDirectionVector(const Vector& direction);

    /// Starts a stroke. Every call is followed by one EndStroke.
    /// \param mesh  the mesh to bind; if null, the first dab binds the mesh of its hit.
    /// \param trigger  the stroke sculpts only if this is TriggerStroke.
    virtual void BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger);
    /// Ends the stroke: finishes the changes to all its meshes as one undo step and unlocks the
    /// last mesh.
    virtual void EndStroke();
    /// Called when the pointer moves. The base class does nothing.
    virtual void MouseMove();
    /// Applies the tool once at a point on the surface. A dab that cannot run, for example because
    /// the mesh is locked, returns without an error and does not change `box`.
    /// \param hit  mesh-local.
    /// \param position  dab centre, world space.
    /// \param size  radius in world units.
    /// \param pressure  0 to 1; scales the build-up.
    /// \param strength  effective strength, before the tool's and the stroke's factors are applied.
    /// \param box  world space; extended to contain the region that the dab changed.
    virtual void ApplyDab(const SurfacePoint& hit,
                          const Vector& position,
                          float size,
                          float pressure,
                          float strength,
                          AxisAlignedBoundingBox& box);
    /// Applies the tool to all vertices of a mesh at once, inside or outside a stroke. Does not
    /// call BeginStroke or EndStroke.
    /// \param byFacing  weights each vertex by how directly it faces the camera; if false, all
    /// weights are 1.
    virtual void ApplyToWholeMesh(Mesh* mesh, float strength, bool byFacing);
    /// Activates a tool by name.
    /// \return false, without any effect, if this brush class has no tool of that name.
    virtual bool SetActiveConfiguration(const QString& name);
    /// Activates a tool; null deactivates the active tool. Stores the settings of the previous
    /// tool, and restores those of the new tool if any are stored. A brush overrides this to apply
    /// the defaults of a new tool. The configuration is borrowed.
    virtual void SetActiveConfiguration(BrushConfiguration* configuration);
    /// Returns the active tool, or null.
    virtual BrushConfiguration* ActiveConfiguration() const;
    /// Resets the active tool to its defaults: deletes its stored settings and activates it again.
    virtual void ResetBrushConfiguration();
    /// Copies the mirror settings.
    virtual void SetMirrorConfig(const MirrorConfiguration& config);
    /// Returns whether settings are stored for the tool, which is the case if it was active before.
    virtual bool IsConfigurationInited(const BrushConfiguration* configuration) const;
    /// Stores the current settings for a tool: all attributes, and all settings without an
    /// attribute except the brush size.
    virtual void StoreConfiguration(const BrushConfiguration* configuration);
    /// Restores the stored settings of a tool. Has no effect if there are none.
    virtual void RestoreConfiguration(const BrushConfiguration* configuration);
    /// Returns the name of an icon to show at the cursor; empty by default.
    virtual QString OverlayIcon() const;
    /// Returns the offset of that icon from the cursor in pixels; 0 by default.
    virtual int OverlayOffset() const;

    /// Copies the settings of another brush, but not its active tool or the stored settings of its
    /// tools. The owner is not notified of the attribute changes.
    virtual const BrushOperation& operator=(const BrushOperation& other);
    /// Always returns true. The function exists only to preserve the layout of the interface.
    virtual bool AlwaysTrueQuery() const;
    /// Returns whether the brush picks the surface itself. False by default.
    virtual bool CustomPicker() const;
    /// Returns the node whose attributes the panel shows: this brush.
    virtual Node* AttributeHolderNode();
    /// Selects a falloff curve by its index in the table of curves. An unknown index selects the
    /// smooth curve. The index -1 keeps the current samples if they are user-defined.
    virtual void SetFalloffIndex(int index);
    /// Returns the index of the current falloff curve, or -1 for user-defined samples.
    virtual int FalloffIndex() const;
    /// Returns the number of alternate behaviours that a modifier key can select, 0 or 1.
    virtual unsigned AlternateBehaviorCount() const;
    /// Returns the name of an alternate behaviour, such as "Smooth"; empty if the index is out of
    /// range.
    virtual QString AlternateBehavior(unsigned index) const;
    /// Returns whether strokes snap to curves (strokeOptionE).
    virtual bool IsSnapToCurve() const;
    /// Returns the distance within which strokes snap to curves, 0 by default.
    virtual float SnapDistance() const;
    /// Returns whether the cursor stays visible during a stroke. True by default.
    virtual bool ShowBrushInStroke() const;
    /// Called after refinement under the brush has split the edge from `vertexA` to `vertexB` with
    /// `newVertex`. The base class does nothing.
    virtual void OnEdgeSplit(Mesh* mesh, uint32_t vertexA, uint32_t vertexB, uint32_t newVertex);
    /// Called after refinement under the brush has flipped the edge from `vertexA` to `vertexB`.
    /// The base class does nothing.
    virtual void OnEdgeFlip(Mesh* mesh, uint32_t vertexA, uint32_t vertexB);
    /// Called after refinement under the brush has merged `removed` into `kept`. The base class
    /// does nothing.
    virtual void OnEdgeCollapse(Mesh* mesh, uint32_t kept, uint32_t removed);
    /// Returns the position of a vertex at the start of the stroke, mesh-local, if the brush
    /// records it. The base class returns the current position.
    virtual Vector VertexOriginalPosition(Mesh* mesh, uint32_t vertex);

    void Serialize(Stream& stream) override;
    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();

    /// Adds a tool to the process-wide catalogue, which takes ownership.
    static void AddConfiguration(BrushConfiguration* configuration);
    /// Returns a tool from the catalogue by index, in the order in which tools were added; null if
    /// the index is out of range.
    static BrushConfiguration* Configuration(uint32_t index);
    static uint32_t ConfigurationCount();

    MirrorConfiguration& MirrorConfig() { return mirrorConfig; }
    /// The direction mode as a number; the brush defines its meaning.
    int Direction() const { return directionAttribute.Value(); }
    /// Mesh-local position of the stroke's previous hit on the same side of the mirror plane;
    /// exactly zero if there is none.
    Vector PreviousPatchPosition() const { return previousPatchPosition; }
    void SetPreviousPatchPosition(const Vector& position) { previousPatchPosition = position; }
    void SetBrushStrengthScale(float scale) { brushStrengthScale = scale; }
    /// Sets the stamp's image file and whether the stamp is used.
    void SetStamp(bool enabled, const QString& path);
    /// Copies all stamp settings from `config`. Settings that `config` does not contain are reset
    /// to their defaults.
    void SetStampConfig(StampConfiguration& config);

    /// A behaviour that a modifier key selects for a stroke.
    struct AlternateBehaviorRecord {
        int modifier = 0;
        QString name;
    };

    // Settings controlled by the active tool. The panel shows only visible attributes; the tool
    // determines which ones are visible.
    AttributeInstance<int> directionAttribute;
    AttributeInstance<CheckableFloat> strokeSmoothingAttribute;
    AttributeInstance<CheckableFloat> steadyStrokeAttribute;
    /// The gap between adjacent copies of the stamp, in percent of the radius.
    AttributeInstance<float> strokeFloatA;
    /// The maximum random increase of that gap, in percent of the radius.
    AttributeInstance<float> strokeFloatB;
    /// Whether pressure affects the strength.
    AttributeInstance<bool> strokeOptionC;
    /// Whether pressure affects the size.
    AttributeInstance<bool> strokeOptionD;
    /// Whether strokes snap to curves.
    AttributeInstance<bool> strokeOptionE;
    /// How each dab positions the stamp.
    AttributeInstance<int> resetOptionA;
    /// The rotation of the stamp, in degrees clockwise.
    AttributeInstance<int> separatorOption;
    /// Whether an imprint fades out, and by how much.
    AttributeInstance<CheckableFloat> imprintPairAttribute;

    /// Angles of the facing falloff, in degrees: full effect below facingAngleStart, none beyond
    /// facingAngleStart + facingAngleRange.
    float facingAngleStart = 0.0f;
    float facingAngleRange = 90.0f;
    /// The factor that the tool applies to the strength of every dab.
    float brushStrengthScale = 1.0f;
    /// If not 0, dabs on any mesh other than the bound one are ignored.
    int strokeMeshLocked = 0;

protected:
    AlternateBehaviorRecord alternateBehavior;

public:
    struct Private;

private:
    /// Reads or writes the settings that are stored per tool.
    void TransferToolSettings(Stream& stream);
    std::unique_ptr<Private> d;
    MirrorConfiguration mirrorConfig;
    Vector previousPatchPosition;

public:
    /// Settings without an attribute, for use by the host; see framework/brushes/BrushSettings.h.
    Private& Settings() { return *d; }
    const Private& Settings() const { return *d; }
};

}  // namespace trovik
