// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class ApplicationInfo;
class QWidget;

namespace Ui {
class DetailsDrawer;
}

/** Fills the drawer with the traffic of one application. Main thread. */
class DrawerController {
  public:
    /** Lays the drawer's labels out in `panel`, which must outlive this object, and clears them. */
    explicit DrawerController(QWidget& panel);
    ~DrawerController();

    DrawerController(const DrawerController&) = delete;
    DrawerController& operator=(const DrawerController&) = delete;

    void clearInformation();

    /** Null clears the drawer. */
    void updateFromApplicationInfo(const std::shared_ptr<const ApplicationInfo>& application);

  private:
    const std::unique_ptr<Ui::DetailsDrawer> m_Outlets;
};
