// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioActions.h"
#include "commands/ViewModel.h"

#include <QCoreApplication>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(ViewActions)
};

struct Direction {
    const char* id;
    QString text;
    const char* key;
    Vector along, up;
};

void AddDirections(const ActionContext& context) {
    const Direction directions[] = {
        {"view.front", Text::tr("Front View"), "Num+1", {0, 0, -1}, {0, 1, 0}},
        {"view.back", Text::tr("Back View"), "Ctrl+Num+1", {0, 0, 1}, {0, 1, 0}},
        {"view.right", Text::tr("Right View"), "Num+3", {-1, 0, 0}, {0, 1, 0}},
        {"view.left", Text::tr("Left View"), "Ctrl+Num+3", {1, 0, 0}, {0, 1, 0}},
        {"view.top", Text::tr("Top View"), "Num+7", {0, -1, 0}, {0, 0, -1}},
        {"view.bottom", Text::tr("Bottom View"), "Ctrl+Num+7", {0, 1, 0}, {0, 0, 1}},
    };
    for (const Direction& direction : directions) {
        context.actions.Add({.id = direction.id,
                             .text = direction.text,
                             .description = Text::tr("Looks at the same point along a world axis."),
                             .keys = {QKeySequence(QLatin1String(direction.key))},
                             .icon = "view",
                             .run = [context, direction] {
                                 context.view.LookAlong(direction.along, direction.up);
                             }});
    }
}

/// An action that toggles a boolean member of the render settings.
void AddToggle(const ActionContext& context, bool RenderSettings::*member, ActionInfo info) {
    info.isCheckable = true;
    info.run = [context, member] {
        RenderSettings settings = context.view.Settings();
        settings.*member = !(settings.*member);
        context.view.SetSettings(settings);
    };
    QAction* action = context.actions.Add(info);
    const auto update = [context, action, member] {
        action->setChecked(context.view.Settings().*member);
    };
    QObject::connect(&context.view, &ViewModel::SettingsChanged, action, update);
    update();
}

void SetMatcap(const ActionContext& context, const QString& name) {
    RenderSettings settings = context.view.Settings();
    settings.matcap = name;
    context.view.SetSettings(settings);
}

void AddMatcaps(const ActionContext& context) {
    const std::vector<MatcapName> matcaps = MatcapTitles();
    for (const MatcapName& matcap : matcaps) {
        QAction* action = context.actions.Add(
            {.id = QStringLiteral("view.matcap.%1").arg(matcap.name),
             .text = Text::tr("Matcap %1").arg(matcap.title),
             .description = Text::tr("Shows the surface with this material."),
             .icon = "matcap",
             .isCheckable = true,
             .run = [context, name = matcap.name] { SetMatcap(context, name); }});
        const auto update = [context, action, name = matcap.name] {
            action->setChecked(context.view.Settings().matcap == name);
        };
        QObject::connect(&context.view, &ViewModel::SettingsChanged, action, update);
        QObject::connect(action, &QAction::triggered, action, update);
        update();
    }
    context.actions.Add({.id = "view.matcap.next",
                         .text = Text::tr("Next Matcap"),
                         .description = Text::tr("Shows the surface with the next material."),
                         .keys = {QKeySequence("Shift+M")},
                         .icon = "matcap",
                         .run = [context, matcaps] {
                             std::size_t next = 0;
                             for (std::size_t i = 0; i < matcaps.size(); ++i)
                                 if (matcaps[i].name == context.view.Settings().matcap)
                                     next = (i + 1) % matcaps.size();
                             SetMatcap(context, matcaps[next].name);
                         }});
}

void AddCavity(const ActionContext& context) {
    constexpr float usual = 0.4f;
    QAction* action =
        context.actions.Add({.id = "view.cavity",
                             .text = Text::tr("Cavity Shading"),
                             .description = Text::tr("Darkens hollows and brightens ridges."),
                             .keys = {QKeySequence("Shift+C")},
                             .icon = "cavity",
                             .isCheckable = true,
                             .run = [context] {
                                 RenderSettings settings = context.view.Settings();
                                 settings.cavity = settings.cavity > 0.0f ? 0.0f : usual;
                                 context.view.SetSettings(settings);
                             }});
    const auto update = [context, action] {
        action->setChecked(context.view.Settings().cavity > 0.0f);
    };
    QObject::connect(&context.view, &ViewModel::SettingsChanged, action, update);
    update();
}

}  // namespace

void AddViewActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    actions.Add({.id = "view.frame",
                 .text = Text::tr("Frame All"),
                 .description = Text::tr("Moves the camera so that the whole surface is visible."),
                 .keys = {QKeySequence("Num+."), QKeySequence(".")},
                 .icon = "frame",
                 .run = [context] { context.view.FrameAll(); }});
    AddDirections(context);
    QAction* orthographic = actions.Add(
        {.id = "view.orthographic",
         .text = Text::tr("Orthographic"),
         .description = Text::tr("Shows the surface without perspective."),
         .keys = {QKeySequence("Num+5")},
         .icon = "orthographic",
         .isCheckable = true,
         .run = [context] { context.view.SetOrthographic(!context.view.IsOrthographic()); }});
    QObject::connect(
        &context.view, &ViewModel::OrthographicChanged, orthographic, &QAction::setChecked);
    AddMatcaps(context);
    AddCavity(context);
    AddToggle(context,
              &RenderSettings::hasWireframe,
              {.id = "view.wireframe",
               .text = Text::tr("Wireframe"),
               .description = Text::tr("Draws the edges of the faces."),
               .keys = {QKeySequence("Shift+W")},
               .icon = "wireframe"});
    AddToggle(context,
              &RenderSettings::isFlat,
              {.id = "view.flat",
               .text = Text::tr("Flat Shading"),
               .description = Text::tr("Shades each face with a single normal."),
               .keys = {QKeySequence("Shift+T")},
               .icon = "flat"});
    AddToggle(context,
              &RenderSettings::showsMask,
              {.id = "view.mask",
               .text = Text::tr("Show Mask"),
               .description = Text::tr("Tints the masked surface."),
               .keys = {QKeySequence("Ctrl+M")},
               .icon = "mask"});
    AddToggle(context,
              &RenderSettings::showsGroups,
              {.id = "view.groups",
               .text = Text::tr("Show Groups"),
               .description = Text::tr("Tints the face groups of the mesh."),
               .icon = "layers"});
    AddToggle(context,
              &RenderSettings::hasGrid,
              {.id = "view.grid",
               .text = Text::tr("Grid"),
               .description = Text::tr("Draws the world's ground grid."),
               .keys = {QKeySequence("Shift+G")},
               .icon = "grid"});
    AddToggle(context,
              &RenderSettings::hasGround,
              {.id = "view.ground",
               .text = Text::tr("Ground"),
               .description = Text::tr("Draws a ground plane with a contact shadow."),
               .icon = "tool-flatten"});
    AddToggle(context,
              &RenderSettings::showsReferences,
              {.id = "view.references",
               .text = Text::tr("Show Reference Images"),
               .description = Text::tr("Shows or hides all reference images."),
               .keys = {QKeySequence("Shift+R")},
               .icon = "reference"});
}

}  // namespace trovik::studio
