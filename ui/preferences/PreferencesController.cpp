// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/PreferencesController.h"

#include <QDir>
#include <QMenu>
#include <algorithm>

#include "config/ConfigStorage.h"
#include "controls/ColumnFitter.h"
#include "daemon/DaemonConnection.h"
#include "platform/LoginItem.h"
#include "platform/WindowFront.h"
#include "platform/WorkspaceIcons.h"
#include "ui/applications/ApplicationsMenu.h"
#include "ui/preferences/ApplicationFileDialog.h"
#include "ui_PreferencesPanel.h"

namespace {

constexpr char tagProperty[] = "tag";
constexpr int listNotInForce = 0;
constexpr int otherApplicationTag = -1;

std::unique_ptr<PreferencesController> sSharedController;

/** A text that the interface file keeps for the case that it is needed. */
QString textOf(const QObject* object, const char* property) {
    return object->property(property).toString();
}

}  // namespace

PreferencesController* PreferencesController::sharedController() {
    if (sSharedController == nullptr) {
        sSharedController = std::make_unique<PreferencesController>(*ConfigStorage::sharedConfig());
    }
    return sSharedController.get();
}

void PreferencesController::releaseSharedController() {
    sSharedController.reset();
}

PreferencesController::PreferencesController(ConfigStorage& config)
    : m_Config(config), m_Outlets(std::make_unique<Ui::PreferencesPanel>()), m_Window(new QDialog) {
    m_Outlets->setupUi(m_Window);
    awakeFromNib();
}

PreferencesController::~PreferencesController() {
    if (m_Window != nullptr && m_Window->isVisible()) {
        m_Window->reject();
    }
    delete m_Window;
}

void PreferencesController::awakeFromNib() {
    for (QAbstractButton* button : m_Outlets->m_AllowDenyAppsMode->buttons()) {
        m_Outlets->m_AllowDenyAppsMode->setId(button, button->property(tagProperty).toInt());
    }
    QComboBox* months = m_Outlets->m_MaxStoreMonths;
    const QStringList tags = months->property("tags").toStringList();
    for (int i = 0; i < months->count(); ++i) {
        months->setItemData(i, tags.value(i).toInt());
    }
    setupTable();
    setupList();
    connect(m_Outlets->m_AllowDenyAppsMode, &QButtonGroup::idToggled, this,
            &PreferencesController::allowDenyAppsModeChanged);
    connect(m_Outlets->m_CleanAllDataBtn, &QPushButton::clicked, this,
            &PreferencesController::cleanAllDataNow);
    connect(m_Outlets->m_OkBtn, &QPushButton::clicked, this, &PreferencesController::okPressed);
    connect(m_Window, &QDialog::finished, this, &PreferencesController::sheedDidEnd);
}

void PreferencesController::setupTable() {
    TableView* table = m_Outlets->m_AppsTable;
    table->setModel(&m_AppsList);
    table->setSearchColumn(AppsListModel::NameColumn);
    const int iconWidth = table->iconSize().width() + 16;
    new ColumnFitter(
        table,
        {{iconWidth, iconWidth, 0}, {96, 208, 1}, {96, ColumnFitter::unlimitedWidth, 2}});  // the table's own
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PreferencesController::tableViewSelectionDidChange);
    connect(&m_AppsList, &QAbstractItemModel::rowsInserted, this, &PreferencesController::showEmptyText);
    connect(&m_AppsList, &QAbstractItemModel::rowsRemoved, this, &PreferencesController::showEmptyText);
}

/** What adds to the list and removes from it: buttons, menus and a key. */
void PreferencesController::setupList() {
    const Ui::PreferencesPanel& outlets = *m_Outlets;
    m_AppsMenu = new QMenu(outlets.m_AddAppBtn);
    m_AppsMenu->setObjectName("m_AppsMenu");
    outlets.m_AddAppBtn->setMenu(m_AppsMenu);
    connect(m_AppsMenu, &QMenu::aboutToShow, this, &PreferencesController::menuNeedsUpdate);
    connect(m_AppsMenu, &QMenu::triggered, this, &PreferencesController::addNewApplicationToList);

    auto* rowMenu = new QMenu(outlets.m_AppsTable);
    rowMenu->addAction(outlets.m_RemoveAction);
    rowMenu->addSeparator();
    rowMenu->addAction(outlets.m_AppsTable->copyAction());
    outlets.m_AppsTable->addAction(outlets.m_RemoveAction);  // for its shortcut
    outlets.m_AppsTable->setMenu(rowMenu);
    connect(outlets.m_RemoveAction, &QAction::triggered, this,
            &PreferencesController::removeApplicationPressed);
    connect(outlets.m_RemoveAppBtn, &QPushButton::clicked, this,
            &PreferencesController::removeApplicationPressed);
}

void PreferencesController::beginSheetModalForWindow(QWidget* window) {
    if (m_Window->isVisible()) {
        WindowFront::orderFrontRegardless(*m_Window);
        return;
    }
    m_Config.reload();  // others may have edited the files, and a save may have failed
    updateFromConfig();
    m_Outlets->m_MaxStoreMonths->setFocus();
    if (m_Window->parentWidget() != window) {
        m_Window->setParent(window, m_Window->windowFlags());
    }
    m_Window->open();
}

void PreferencesController::okPressed() {
    m_Window->accept();
}

void PreferencesController::sheedDidEnd() {
    updateConfig();
}

void PreferencesController::updateFromConfig() {
    showWhetherConfigIsWritable();
    showMaxStoreMonths(m_Config.maxStorageTimeInMonths());
    setAllowDenyAppsMode(m_Config.allowDenyAppsMode());
    updateAppsListFromConfig();
    allowDenyAppsModeChanged();
    m_ShownAutostarted = m_Config.isAutostarted();
    m_Outlets->m_IsAutostarted->setChecked(m_ShownAutostarted);
}

void PreferencesController::updateConfig() {
    m_Config.setMaxStorageTimeInMonths(m_Outlets->m_MaxStoreMonths->currentData().toInt());
    m_Config.setAllowDenyAppsMode(allowDenyAppsMode());
    writeAppsListToConfig();
    const bool isAutostarted = m_Outlets->m_IsAutostarted->isChecked();
    m_Config.setAutostarted(isAutostarted);
    m_Config.save();
    if (isAutostarted != m_ShownAutostarted ||
        !LoginItem::exists()) {  // what the user made of it elsewhere stays
        LoginItem::setEnabled(isAutostarted);
    }
}

void PreferencesController::showWhetherConfigIsWritable() {
    NoticeStrip* notice = m_Outlets->m_UnwritableNotice;
    const bool isWritable = m_Config.isSystemConfigWritable();
    const QString sentence = textOf(notice, "sentence");
    const QString file = QString::fromStdString(m_Config.systemFile());
    notice->setText(sentence, file);
    notice->setVisible(!isWritable);
    m_Window->setAccessibleDescription(isWritable ? QString() : sentence + ' ' + file);
}

/** A number of months that the interface file does not offer gets an item of its own, among the others in order. */
void PreferencesController::showMaxStoreMonths(int months) {
    QComboBox* box = m_Outlets->m_MaxStoreMonths;
    const QStringList offered = box->property("tags").toStringList();
    for (int i = box->count() - 1; i >= 0; --i) {
        if (!offered.contains(box->itemData(i).toString())) {
            box->removeItem(i);  // another one's
        }
    }
    if (box->findData(months) < 0) {
        int place = 0;
        while (place < box->count() && box->itemData(place).toInt() < months) {
            ++place;
        }
        const QString title =
            months < 1 ? textOf(box, "unlimitedTitle") : textOf(box, "otherTitle").arg(months);
        box->insertItem(place, title, months);
    }
    box->setCurrentIndex(box->findData(months));
}

void PreferencesController::updateAppsListFromConfig() {
    QList<AppListEntry> entries;
    for (const QString& path : m_Config.allowDenyAppsList().value_or(QStringList())) {
        const AppListEntry entry = AppListEntry::entryWithBundlePath(path);
        if (entry.exists()) {
            entries << entry;
        }
    }
    m_AppsList.setEntries(entries);
}

void PreferencesController::writeAppsListToConfig() {
    m_Config.setAllowDenyAppsList(m_AppsList.bundlePaths());
}

int PreferencesController::allowDenyAppsMode() const {
    const QButtonGroup* modes = m_Outlets->m_AllowDenyAppsMode;
    return modes->checkedButton() != nullptr ? modes->checkedId() : m_Config.allowDenyAppsMode();
}

void PreferencesController::setAllowDenyAppsMode(int mode) {
    QButtonGroup* modes = m_Outlets->m_AllowDenyAppsMode;
    modes->setExclusive(false);  // or the last one could not be switched off
    for (QAbstractButton* button : modes->buttons()) {
        button->setChecked(modes->id(button) == mode);
    }
    modes->setExclusive(true);
}

void PreferencesController::allowDenyAppsModeChanged() {
    const Ui::PreferencesPanel& outlets = *m_Outlets;
    const bool isListInForce = allowDenyAppsMode() != listNotInForce;
    outlets.m_AppsTable->setEnabled(isListInForce);
    outlets.m_AddAppBtn->setEnabled(isListInForce);
    tableViewSelectionDidChange();
    const QAbstractButton* mode = outlets.m_AllowDenyAppsMode->checkedButton();
    outlets.m_ModeNote->setText(
        textOf(outlets.m_ModeNote, mode != nullptr ? "textForKnownMode" : "textForUnknownMode"));
    showEmptyText();
}

int PreferencesController::selectedRow() const {
    const QModelIndexList rows = m_Outlets->m_AppsTable->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void PreferencesController::tableViewSelectionDidChange() {
    const bool isEnabled = selectedRow() >= 0 && allowDenyAppsMode() != listNotInForce;
    m_Outlets->m_RemoveAppBtn->setEnabled(isEnabled);
    m_Outlets->m_RemoveAction->setEnabled(isEnabled);
}

void PreferencesController::menuNeedsUpdate() {
    ApplicationsMenu::fill(*m_AppsMenu, [this](const ApplicationInfo& application) {
        return !isAppExistInList(application.bundlePath());
    });
    m_AppsMenu->addSeparator();
    QAction* other = m_AppsMenu->addAction(WorkspaceIcons::iconForFile(ApplicationFileDialog::startFolder()),
                                           "Other Application...");
    other->setData(otherApplicationTag);
}

void PreferencesController::addNewApplicationToList(const QAction* item) {
    const int tag = item->data().toInt();
    if (tag < 0) {
        runOpenPanel();
    } else if (const auto application = DaemonConnection::sharedConnection()->applicationInfoFromId(tag)) {
        addEntry(application->bundlePath());
    }
}

void PreferencesController::runOpenPanel() {
    auto* panel = new ApplicationFileDialog(m_Window);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    connect(panel, &QFileDialog::fileSelected, this, [this](const QString& file) {
        const QString path = QDir::cleanPath(file);
        if (!isAppExistInList(path)) {
            addEntry(path);
        }
    });
    panel->open();
}

void PreferencesController::addEntry(const QString& bundlePath) {
    m_AppsList.append(AppListEntry::entryWithBundlePath(bundlePath));
    m_Outlets->m_AppsTable->selectRow(m_AppsList.rowCount() - 1);
}

void PreferencesController::showEmptyText() {
    const QAbstractButton* mode = m_Outlets->m_AllowDenyAppsMode->checkedButton();
    TableView* table = m_Outlets->m_AppsTable;
    const QString text = mode != nullptr ? textOf(mode, "emptyText") : textOf(table, "emptyText");
    table->setEmptyText(m_AppsList.rowCount() == 0 ? text : QString());
}

/** The row that takes the place is selected then, so that the key can be pressed again. */
void PreferencesController::removeApplicationPressed() {
    const int row = selectedRow();
    if (row < 0) {
        return;
    }
    m_AppsList.removeAt(row);
    if (m_AppsList.rowCount() > 0) {
        m_Outlets->m_AppsTable->selectRow(std::min(row, m_AppsList.rowCount() - 1));
    }
}

void PreferencesController::cleanAllDataNow() {
    DaemonConnection::sharedConnection()->startCleanDataBase();
}
