// SPDX-License-Identifier: Apache-2.0
#include "commands/FileActions.h"
#include "commands/ToolCatalogue.h"
#include "commands/ViewModel.h"
#include "window/MainWindow.h"

#include <QMenu>
#include <QMenuBar>

namespace trovik::studio {

namespace {

/// Adds actions by id; "-" is a separator. Unknown ids are ignored.
void Fill(QMenu* menu, const ActionRegistry& actions, const QStringList& ids) {
    for (const QString& id : ids) {
        if (id == QLatin1String("-"))
            menu->addSeparator();
        else if (QAction* action = actions.Find(id))
            menu->addAction(action);
    }
}

}  // namespace

void FillMenus(QMainWindow& window, const ActionRegistry& actions, FileActions& files) {
    QMenuBar* bar = window.menuBar();
    QMenu* file = bar->addMenu(MainWindow::tr("&File"));
    Fill(file, actions, {"file.new", "file.open"});
    files.FillRecent(file->addMenu(MainWindow::tr("Open Recent")));
    QMenu* script = new QMenu(MainWindow::tr("Play Script"), bar);
    Fill(script, actions, {"file.script.load", "-", "script.play", "script.step", "script.stop"});
    Fill(file,
         actions,
         {"-",
          "file.save",
          "file.saveAs",
          "file.saveIncremental",
          "file.saveCopy",
          "-",
          "file.import",
          "file.export",
          "file.bake",
          "file.displace",
          "-",
          "file.script.run",
          "file.script.save",
          "file.timelapse",
          "file.recordEvents",
          "file.playEvents",
          "file.screenshot",
          "file.render",
          "-",
          "file.quit"});
    file->insertMenu(actions.Find("file.script.save"), script);
    Fill(bar->addMenu(MainWindow::tr("&Edit")),
         actions,
         {"edit.undo",
          "edit.redo",
          "-",
          "edit.cancel",
          "edit.reset",
          "-",
          "window.preferences",
          "window.keymap"});
    QMenu* tools = bar->addMenu(MainWindow::tr("&Tools"));
    for (const ToolAppearance& tool : KnownTools())
        Fill(tools, actions, {QStringLiteral("tool.%1").arg(tool.name)});
    Fill(tools,
         actions,
         {"-",
          "brush.larger",
          "brush.smaller",
          "brush.stronger",
          "brush.weaker",
          "-",
          "brush.pressure.strength",
          "brush.pressure.size",
          "brush.steady",
          "brush.stamp",
          "brush.facing"});
    Fill(bar->addMenu(MainWindow::tr("&Levels")),
         actions,
         {"level.subdivide",
          "level.subdivide.once",
          "-",
          "level.up",
          "level.down",
          "-",
          "level.unsubdivide",
          "level.apply",
          "-",
          "level.delete.higher",
          "level.delete.lower"});
    Fill(bar->addMenu(MainWindow::tr("L&ayers")),
         actions,
         {"layer.add",
          "layer.duplicate",
          "layer.rename",
          "layer.none",
          "-",
          "layer.visible",
          "layer.lock",
          "layer.raise",
          "layer.lower",
          "-",
          "layer.merge",
          "layer.erase",
          "layer.delete"});
    Fill(bar->addMenu(MainWindow::tr("&Mask")),
         actions,
         {"mask.clear",
          "mask.fill",
          "mask.invert",
          "-",
          "mask.grow",
          "mask.shrink",
          "mask.blur",
          "mask.sharpen",
          "-",
          "mask.cavity",
          "mask.ridges",
          "-",
          "mask.box",
          "mask.lasso",
          "-",
          "visibility.hide",
          "visibility.isolate",
          "visibility.show",
          "visibility.invert",
          "visibility.grow",
          "visibility.hideBox",
          "visibility.hideLasso",
          "visibility.isolateLasso",
          "-",
          "group.mask",
          "group.unmask",
          "group.maskOnly",
          "group.hide",
          "group.isolate",
          "group.show"});
    Fill(bar->addMenu(MainWindow::tr("&Symmetry")),
         actions,
         {"symmetry.x",
          "symmetry.y",
          "symmetry.z",
          "symmetry.radial",
          "symmetry.topological",
          "symmetry.off",
          "-",
          "symmetry.symmetrize",
          "symmetry.symmetrize.negative"});
    Fill(bar->addMenu(MainWindow::tr("S&urface")),
         actions,
         {"surface.transform",
          "-",
          "surface.inflate",
          "surface.smooth",
          "surface.relax",
          "surface.sharpen",
          "-",
          "surface.remesh",
          "surface.decimate",
          "surface.repair",
          "surface.voxelRemesh",
          "surface.quadrangulate",
          "surface.project",
          "-",
          "surface.append",
          "surface.extract"});
    QMenu* view = bar->addMenu(MainWindow::tr("&View"));
    Fill(view,
         actions,
         {"view.frame",
          "view.orthographic",
          "-",
          "view.front",
          "view.back",
          "view.right",
          "view.left",
          "view.top",
          "view.bottom",
          "-"});
    QMenu* matcaps = view->addMenu(MainWindow::tr("Matcap"));
    for (const MatcapName& matcap : MatcapTitles())
        Fill(matcaps, actions, {QStringLiteral("view.matcap.%1").arg(matcap.name)});
    Fill(matcaps, actions, {"-", "view.matcap.next"});
    Fill(view,
         actions,
         {"view.cavity",
          "view.wireframe",
          "view.flat",
          "view.mask",
          "view.groups",
          "-",
          "view.grid",
          "view.ground"});
    QMenu* references = view->addMenu(MainWindow::tr("References"));
    Fill(references,
         actions,
         {"reference.add", "reference.replace", "reference.delete", "-", "view.references"});
    QMenu* bookmarks = view->addMenu(MainWindow::tr("Bookmarks"));
    Fill(bookmarks,
         actions,
         {"view.bookmark.add",
          "view.bookmark.update",
          "view.bookmark.rename",
          "view.bookmark.delete",
          "-",
          "view.bookmark.next",
          "view.bookmark.1",
          "view.bookmark.2",
          "view.bookmark.3",
          "view.bookmark.4"});
    QMenu* windows = bar->addMenu(MainWindow::tr("&Window"));
    Fill(windows, actions, {"window.palette", "window.panels", "window.fullscreen", "-"});
    for (const ActionInfo& info : actions.Infos())
        if (info.id.startsWith(QLatin1String("panel."))) Fill(windows, actions, {info.id});
    windows->addSeparator();
    QMenu* undocked = windows->addMenu(MainWindow::tr("Undock"));
    for (const ActionInfo& info : actions.Infos())
        if (info.id.startsWith(QLatin1String("undock."))) Fill(undocked, actions, {info.id});
    Fill(bar->addMenu(MainWindow::tr("&Help")),
         actions,
         {"help.welcome", "window.keymap", "help.tabletTester", "-", "help.about"});
}

}  // namespace trovik::studio
