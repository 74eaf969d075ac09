// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Image.h"
#include "host/Mesh.h"

#include <memory>

namespace trovik {

class BrushConfiguration;

/// Fall-off by the angle between the surface and the view, process-wide: the switch of the panel
/// row that holds its two angles.
class TROVIK_API CheckableFloatArray {
public:
    static bool s_bActive;
};

enum class PredefinedCategory : int { Paint = 0, Sculpt = 1 };

/// One tool of the tray: a brush class and a number by which it knows what to do.
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
    const QString& Name() const { return name; }
    const QString& DisplayName() const { return displayName; }
    PredefinedCategory Category() const { return category; }
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

/// How a tool's stamp is laid.
class TROVIK_API StampConfiguration {
public:
    StampConfiguration();
    ~StampConfiguration();

    QString path;
    /// The stamp is in use.
    bool enabled = false;
    /// How far each dab's stamp is turned at random, 0 to 1 of a full turn.
    float randomTurn = 0.0f;
    /// Each dab's stamp gets a place, size and turn of its own.
    bool randomize = false;
};

/// Mirroring of a brush.
class TROVIK_API MirrorConfiguration {
public:
    enum Mode : int { Off = 0, PlaneX = 1, PlaneY = 2, PlaneZ = 3, Topological = 7 };

    int MirrorMode() const { return mode; }
    void SetMirrorMode(int newMode) { mode = newMode; }
    /// The map of points (mesh-local) that takes the main hit to the mirrored one now at work.
    void SetPointMap(const Matrix& map) { pointMap = map; }
    const Matrix& PointMap() const { return pointMap; }
    /// (p, w) through the point map of `hit`'s mirror. Mesh-local.
    Vector Transform(const Vector& p, float w, const SurfacePoint* hit) const;

private:
    int mode = Off;
    Matrix pointMap;
};

/// Something that the user does with the mouse.
class TROVIK_API Operation : public Node {
public:
    /// Runs the operation once with its effect inverted.
    virtual void ExecuteAndInvert();
};

/// The `mask` argument that selects the brush's stamp.
inline constexpr int stampMask = -1;

/// Base of all brushes: settings, their panel, the stamp, and the stroke calls that the host's
/// stroke loop makes. `mask` -1 means the brush's stamp; mask 1 is the mirrored stamp read.
class TROVIK_API BrushOperation : public Operation {
public:
    /// Key state with which a stroke began.
    enum Modifier : int { ModifierNone = 0, ModifierSmooth = 1, ModifierInvert = 2 };
    /// 0: a sculpting stroke; anything else: a gesture that sculpts nothing.
    enum TriggerType : int { TriggerStroke = 0, TriggerOther = 1 };

    BrushOperation();
    ~BrushOperation() override;

    /// 0: dabs along the motion; 1: one dab that grows from the press point; 2: one dab whose size
    /// is the distance between press and release, in their middle.
    virtual int StrokeDrawMode() const;
    virtual bool IsScreenSpace() const;
    /// Size and strength as set, 0 to Max.
    virtual float BrushSize() const;
    virtual float BrushStrength() const;
    virtual void SetBrushSize(float size);
    virtual void SetBrushStrength(float strength);
    /// Size and strength under a pressure of 0 to 1.
    virtual float EffectiveBrushSize(float pressure) const;
    virtual float EffectiveBrushStrength(float pressure) const;
    /// Share, in percent, that does not depend on pressure.
    virtual float BrushSizeBias() const;
    virtual float BrushStrengthBias() const;
    virtual float MaxBrushSize() const;
    virtual float MaxBrushStrength() const;
    virtual bool UsesStrokeSmoothing() const;
    virtual float StrokeSmoothingDistance() const;
    virtual void SetStrokeSmoothing(bool on, float distance);
    virtual bool HasCustomCursor() const;
    virtual bool UsesSteadyStroke() const;
    virtual float SteadyStrokeDistance() const;
    virtual void SetSteadyStroke(bool on, float distance);
    virtual void SetStampSizingMode(int mode);
    /// Name of the falloff curve in force.
    virtual QString Falloff() const;
    virtual void SetFalloff(const QString& name);
    /// Samples of the falloff from the centre to the rim; borrowed for the length of a stroke.
    virtual const Store<float>& FalloffData() const;
    virtual bool UsesFalloffBasedOnFacingAngle() const;
    /// Angles in degrees. `on` is process-wide.
    virtual void SetFalloffBasedOnFacingAngle(bool on, float start, float range);
    virtual bool UsesStampRandomize() const;
    virtual void SetStampRandomize(bool on);

    virtual bool IsMaskEnabled(int mask) const;
    /// Never null: an empty image of width 0 stands for none.
    virtual Image* MaskImage(int mask) const;
    /// Mesh-local position to stamp pixel, projective, for the dab at work.
    virtual Matrix MaskMatrix(int mask) const;
    virtual bool IsMaskInverted(int mask) const;
    virtual float MaskFactor(int mask) const;
    virtual bool IsMaskTiled(int mask) const;
    virtual QString MaskName(int mask) const;
    virtual bool MaskBuildUp(int mask) const;
    virtual Image* MaskOpacityImage(int mask) const;
    virtual float MaskOffset(int mask) const;
    virtual void OnMaskChanged(int mask);

    virtual float BuildUpRate() const;
    virtual bool IsImprintTool() const;
    virtual bool NonImprintQueryA() const;
    virtual bool PressureControlsBrushStrength() const;
    virtual bool IsInverted() const;
    virtual bool IsOrientedToSurface() const;
    virtual void SetOrientedToSurface(bool on);
    virtual bool NonImprintQueryB() const;
    /// The direction of the dab at work, mesh-local, for the cursor to show.
    virtual void SetDirectionVector(const Vector& direction);

    virtual void BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger);
    virtual void EndStroke();
    virtual void MouseMove();
    /// One application of the tool. See the brush for the meaning of each argument.
    virtual void ApplyDab(const SurfacePoint& hit,
                          const Vector& position,
                          float size,
                          float pressure,
                          float strength,
                          AxisAlignedBoundingBox& box);
    virtual void ApplyToWholeMesh(Mesh* mesh, float strength, bool byFacing);
    /// By name. \return false for a name that no row of this brush's class bears.
    virtual bool SetActiveConfiguration(const QString& name);
    /// Stores the settings with the tool that was active and takes back those of the new one, if it
    /// was active before.
    virtual void SetActiveConfiguration(BrushConfiguration* configuration);
    virtual BrushConfiguration* ActiveConfiguration() const;
    /// Forgets the active tool's stored settings.
    virtual void ResetBrushConfiguration();
    virtual void SetMirrorConfig(const MirrorConfiguration& config);
    /// Whether the tool has stored settings, that is, whether it was left once.
    virtual bool IsConfigurationInited(const BrushConfiguration* configuration) const;
    virtual void StoreConfiguration(const BrushConfiguration* configuration);
    virtual void RestoreConfiguration(const BrushConfiguration* configuration);
    virtual QString OverlayIcon() const;
    virtual int OverlayOffset() const;

    virtual const BrushOperation& operator=(const BrushOperation& other);
    virtual bool AlwaysTrueQuery() const;
    virtual bool CustomPicker() const;
    virtual Node* AttributeHolderNode();
    virtual void SetFalloffIndex(int index);
    virtual int FalloffIndex() const;
    virtual unsigned AlternateBehaviorCount() const;
    virtual QString AlternateBehavior(unsigned index) const;
    virtual bool IsSnapToCurve() const;
    virtual float SnapDistance() const;
    virtual bool ShowBrushInStroke() const;
    virtual void OnEdgeSplit(Mesh* mesh, uint32_t vertexA, uint32_t vertexB, uint32_t newVertex);
    virtual void OnEdgeFlip(Mesh* mesh, uint32_t vertexA, uint32_t vertexB);
    virtual void OnEdgeCollapse(Mesh* mesh, uint32_t kept, uint32_t removed);
    virtual Vector VertexOriginalPosition(Mesh* mesh, uint32_t vertex);

    void Serialize(Stream& stream) override;
    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();

    /// The catalogue of all tools; it takes ownership.
    static void AddConfiguration(BrushConfiguration* configuration);
    static BrushConfiguration* Configuration(uint32_t index);
    static uint32_t ConfigurationCount();

    MirrorConfiguration& MirrorConfig() { return mirrorConfig; }
    /// Direction setting as a number, see the brush.
    int Direction() const { return directionAttribute.Value(); }
    /// Position, mesh-local, of the hit before this one in the stroke, of the same side of a
    /// mirror; exactly zero while there is none.
    Vector PreviousPatchPosition() const { return previousPatchPosition; }
    void SetPreviousPatchPosition(const Vector& position) { previousPatchPosition = position; }
    void SetBrushStrengthScale(float scale) { brushStrengthScale = scale; }
    void SetStamp(bool enabled, const QString& path);
    void SetStampConfig(StampConfiguration& config);

    /// What a modifier key can turn a stroke into.
    struct AlternateBehaviorRecord {
        int modifier = 0;
        QString name;
    };

    // Settings that the tools of a brush set and show. The brush's panel shows those that are
    // visible; which ones are is decided by the tool.
    AttributeInstance<int> directionAttribute;
    AttributeInstance<CheckableFloat> strokeSmoothingAttribute;
    AttributeInstance<CheckableFloat> steadyStrokeAttribute;
    /// Stamp spacing and its random part, in percent of the brush size.
    AttributeInstance<float> strokeFloatA;
    AttributeInstance<float> strokeFloatB;
    /// Pressure to strength, pressure to size, snapping: switches of the panel.
    AttributeInstance<bool> strokeOptionC;
    AttributeInstance<bool> strokeOptionD;
    AttributeInstance<bool> strokeOptionE;
    AttributeInstance<int> resetOptionA;
    AttributeInstance<int> separatorOption;
    AttributeInstance<CheckableFloat> imprintPairAttribute;

    /// Angles in degrees: full effect below start, none beyond start + range.
    float facingAngleStart = 0.0f;
    float facingAngleRange = 90.0f;
    /// Factor of the tool on every dab's strength.
    float brushStrengthScale = 1.0f;
    /// Not 0: a stroke keeps to the mesh on which it began.
    int strokeMeshLocked = 0;

protected:
    AlternateBehaviorRecord alternateBehavior;

public:
    struct Private;

private:
    /// Reads or writes the settings that belong to one tool.
    void TransferToolSettings(Stream& stream);
    std::unique_ptr<Private> d;
    MirrorConfiguration mirrorConfig;
    Vector previousPatchPosition;

public:
    /// Host side of the settings that have no attribute: see framework/brushes/BrushSettings.h.
    Private& Settings() { return *d; }
    const Private& Settings() const { return *d; }
};

}  // namespace trovik
