// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <memory>

#include "ui/preferences/AppsListModel.h"

class ConfigStorage;
class QAction;
class QDialog;
class QMenu;

namespace Ui {
class PreferencesPanel;
}

/**
 * The sheet of the preferences. It is filled from the settings when it opens; what the user changes stays in it until
 * it ends, which saves, however it ends. Main thread.
 */
class PreferencesController : public QObject {
  public:
    /** The sheet over this system's and user's settings, made on the first call. */
    static PreferencesController* sharedController();

    /** To be called before the application object goes; the next `sharedController` would make another one. */
    static void releaseSharedController();

    /** `config` outlives this object. */
    explicit PreferencesController(ConfigStorage& config);

    /** Ends the sheet if it is open. */
    ~PreferencesController() override;

    PreferencesController(const PreferencesController&) = delete;
    PreferencesController& operator=(const PreferencesController&) = delete;

    /**
     * Shows the settings in a sheet over `window`, which owns it from then on, and returns at once. When the sheet is
     * open already it comes to the front, with what was changed in it.
     */
    void beginSheetModalForWindow(QWidget* window);

    /** 0 all applications are recorded, 1 only the listed ones, 2 all but the listed ones; others are not ours. */
    int allowDenyAppsMode() const;

    /** A mode that no button stands for chooses none of them. */
    void setAllowDenyAppsMode(int mode);

  private:
    void awakeFromNib();
    void setupTable();
    void setupList();

    void okPressed();
    void sheedDidEnd();
    void updateFromConfig();
    void updateConfig();
    void showMaxStoreMonths(int months);
    void showWhetherConfigIsWritable();
    void updateAppsListFromConfig();
    void writeAppsListToConfig();

    int selectedRow() const;
    bool isAppExistInList(const QString& bundlePath) const { return m_AppsList.contains(bundlePath); }
    void tableViewSelectionDidChange();
    void allowDenyAppsModeChanged();
    void showEmptyText();

    void menuNeedsUpdate();
    void addNewApplicationToList(const QAction* item);
    void runOpenPanel();
    void addEntry(const QString& bundlePath);
    void removeApplicationPressed();
    void cleanAllDataNow();

    ConfigStorage& m_Config;
    const std::unique_ptr<Ui::PreferencesPanel> m_Outlets;
    AppsListModel m_AppsList;
    bool m_ShownAutostarted = false;   ///< as the sheet opened
    const QPointer<QDialog> m_Window;  ///< owned, by the window under the sheet as well
    QMenu* m_AppsMenu = nullptr;       ///< in m_Window
};
