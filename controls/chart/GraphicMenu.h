// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMenu>

class GraphicView;

/** A chart's context menu, and what its commands do. Deletes itself when it is closed. Main thread. */
class GraphicMenu : public QMenu {
    Q_OBJECT

  public:
    explicit GraphicMenu(GraphicView& view);

  private:
    static void copyPicture(GraphicView& view);
    static void savePicture(GraphicView& view);
    static void exportPoints(GraphicView& view);
};
