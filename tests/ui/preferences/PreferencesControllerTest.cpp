// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/preferences/PreferencesController.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <atomic>

#include "config/ConfigStorage.h"
#include "controls/TableView.h"
#include "daemon/DaemonConnection.h"
#include "protocol/DaemonApplicationInfo.h"
#include "tests/support/DaemonTest.h"

namespace {

constexpr int eventType = -1;
constexpr int cleanEvent = 1;
constexpr int configChangedEvent = 4;

/** A sheet over settings in a folder of its own, on a scripted daemon with applications of the ids 0, 1, 2 ... */
class PreferencesControllerTest : public DaemonTest {
  protected:
    void begin() override {
        m_Parent.show();
        m_Config = std::make_unique<ConfigStorage>(path("system").toStdString(), path("user").toStdString());
    }

    QString path(const QString& name) const { return m_Folder.filePath(name); }

    QString makeFile(const QString& name, bool isProgram = true) const {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(QFile::ReadOwner | (isProgram ? QFile::ExeOwner : QFile::ReadOwner));
        return file.fileName();
    }

    void open() {
        if (m_Controller == nullptr) {
            m_Controller = std::make_unique<PreferencesController>(*m_Config);
        }
        m_Controller->beginSheetModalForWindow(&m_Parent);
        m_Sheet = m_Parent.findChild<QDialog*>("m_Window");
        ASSERT_TRUE(QTest::qWaitForWindowActive(m_Sheet));
    }

    template <class Widget = QPushButton>
    Widget* outlet(const char* name) const {
        return m_Sheet->findChild<Widget*>(name);
    }

    TableView* table() const { return outlet<TableView>("m_AppsTable"); }

    void choose(int mode) { outlet<QButtonGroup>("m_AllowDenyAppsMode")->button(mode)->click(); }

    QStringList rows() const {
        QStringList paths;
        for (int row = 0; row < table()->model()->rowCount(); ++row) {
            paths << table()->model()->index(row, 2).data().toString();
        }
        return paths;
    }

    /** The items of the menu of applications, as it opens. */
    QList<QAction*> menuItems() {
        outlet<QMenu>("m_AppsMenu")->popup({});
        outlet<QMenu>("m_AppsMenu")->close();
        return outlet<QMenu>("m_AppsMenu")->actions();
    }

    QStringList menuTexts() {
        QStringList texts;
        for (const QAction* item : menuItems()) {
            texts << item->text();
        }
        return texts;
    }

    /** How often the daemon was sent an event. */
    int sent(int event) {
        DaemonConnection::sharedConnection()->countApplications(
            7);  // answered after all that was sent before
        int count = 0;
        for (const auto& request : m_Daemon.waitForRequests(0)) {
            count += request.header.messageType == eventType && intAt(request.body, 0) == event ? 1 : 0;
        }
        return count;
    }

    bool answer(const LinkPeer::Request& request, BinarySerializer& body) const {
        switch (request.header.messageType) {
            case 12:
            case 18:
                return describe(intAt(request.body, request.body.size() - 4)).SerializeTo(body);
            case 13:
                body.WriteInt(7);
                return true;
            case 16:
                body.WriteInt(m_Count);
                return true;
            default:
                return false;
        }
    }

    DaemonApplicationInfo describe(int id) const {
        DaemonApplicationInfo info;
        info.id = id;
        info.name = "R&D " + std::to_string(id);
        info.fullPath = path("app" + QString::number(id)).toStdString();
        return info;
    }

    QTemporaryDir m_Folder;
    std::atomic<int> m_Count{4};
    LinkPeer m_Daemon{[this](const auto& request, auto& body) { return answer(request, body); }, daemonPort};
    QWidget m_Parent;
    std::unique_ptr<ConfigStorage> m_Config;
    std::unique_ptr<PreferencesController> m_Controller;
    QDialog* m_Sheet = nullptr;
};

TEST_F(PreferencesControllerTest, SavesOnceHoweverItEnds) {
    const std::function<void()> endings[] = {[this] { outlet("m_OkBtn")->click(); },
                                             [this] { QTest::keyClick(table(), Qt::Key_Return); },
                                             [this] { QTest::keyClick(m_Sheet, Qt::Key_Escape); },
                                             [this] { m_Sheet->close(); }, [this] { m_Controller.reset(); }};
    int saves = 0;
    for (const auto& end : endings) {
        open();
        outlet<QComboBox>("m_MaxStoreMonths")->setCurrentIndex(saves % 3);
        choose(1 + saves % 2);
        outlet<QAbstractButton>("m_IsAutostarted")->setChecked(saves % 2 == 0);
        EXPECT_EQ(sent(configChangedEvent), saves) << "what is changed stays in the sheet";
        end();
        EXPECT_EQ(sent(configChangedEvent), ++saves);
        const ConfigStorage stored(path("system").toStdString(), path("user").toStdString());
        EXPECT_EQ(stored.maxStorageTimeInMonths(), (std::array{6, 1, 3}[saves % 3]));
        EXPECT_EQ(stored.allowDenyAppsMode(), 2 - saves % 2);
        EXPECT_EQ(stored.isAutostarted(), saves % 2 == 1);
    }
}

TEST_F(PreferencesControllerTest, KeepsChoicesThatOthersStoredAndItDoesNotOffer) {
    m_Config->setAllowDenyAppsMode(9);
    m_Config->setAllowDenyAppsList({});
    m_Config->save();
    for (const int months : {7, -2, 48}) {
        ConfigStorage other(path("system").toStdString(), path("user").toStdString());
        other.setMaxStorageTimeInMonths(months);
        other.save();
        const int saves = sent(configChangedEvent);
        open();
        EXPECT_EQ(outlet<QComboBox>("m_MaxStoreMonths")->count(), 7);
        m_Sheet->reject();
        EXPECT_EQ(ConfigStorage(path("system").toStdString(), {}).maxStorageTimeInMonths(), months);
        EXPECT_EQ(m_Config->allowDenyAppsMode(), 9);
        EXPECT_EQ(sent(configChangedEvent), saves);
    }
    m_Config->setAllowDenyAppsMode(1);
    m_Config->save();
    open();
    EXPECT_EQ(m_Controller->allowDenyAppsMode(), 1);
}

TEST_F(PreferencesControllerTest, LeavesTheEntryForLogInAloneWhoseBoxIsNotTouched) {
    const QString name = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                         "/autostart/nevtora-meter.desktop";
    QDir().mkpath(QFileInfo(name).path());
    QFile entry(name);
    const QByteArray theirs = "[Desktop Entry]\nExec=sh --mine\nX-GNOME-Autostart-enabled=false\n";
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly) && entry.write(theirs) > 0);
    entry.close();
    open();
    m_Sheet->accept();
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    EXPECT_EQ(entry.readAll(), theirs);
    entry.remove();
}

TEST_F(PreferencesControllerTest, DropsApplicationsWhoseFileIsGoneButNotThoseThatNeverHadOne) {
    const QString here = makeFile("here");
    m_Config->setAllowDenyAppsList({here, path("gone"), "/mach_kernel", "(unknown)", "web:/usr/bin/mail"});
    open();
    const QStringList left{here, "/mach_kernel", "(unknown)", "web:/usr/bin/mail"};
    EXPECT_EQ(rows(), left);
    m_Sheet->accept();
    EXPECT_EQ(m_Config->allowDenyAppsList(), left);
}

TEST_F(PreferencesControllerTest, OnlyAListInForceCanBeChanged) {
    m_Config->setAllowDenyAppsList({makeFile("a"), makeFile("b")});
    open();
    const auto enabled = [this] {
        return std::array{table()->isEnabled(), outlet("m_AddAppBtn")->isEnabled(),
                          outlet("m_RemoveAppBtn")->isEnabled()};
    };
    EXPECT_EQ(enabled(), (std::array{false, false, false}));
    choose(1);
    EXPECT_EQ(enabled(), (std::array{true, true, false}));
    table()->selectRow(0);
    EXPECT_EQ(enabled(), (std::array{true, true, true}));
    choose(0);
    EXPECT_EQ(enabled(), (std::array{false, false, false}));
    choose(2);
    EXPECT_EQ(enabled(), (std::array{true, true, true}));
    table()->setFocus();
    QTest::keyClick(table(), Qt::Key_Delete);
    EXPECT_EQ(rows(), QStringList(path("b")));
    EXPECT_EQ(table()->emptyText(), "");
    outlet("m_RemoveAppBtn")->click();
    EXPECT_EQ(rows(), QStringList());
    EXPECT_NE(table()->emptyText(), "");
    EXPECT_EQ(enabled(), (std::array{true, true, false}));
}

TEST_F(PreferencesControllerTest, TheMenuOffersWhatIsNotListedAndLastAnotherApplication) {
    m_Config->setAllowDenyAppsMode(1);
    m_Config->setAllowDenyAppsList({makeFile("app2")});
    open();
    EXPECT_EQ(menuTexts(), QStringList({"R&&D 1", "R&&D 3", "", "Other Application..."}));
    auto* menu = outlet<QMenu>("m_AppsMenu");
    menu->popup({});
    for (const auto& [keys, found] : {std::pair("r&d 3", 1), {"o", 3}, {"oth", 3}, {"rx", 1}}) {
        menu->setActiveAction(menu->actions().first());
        QTest::keyClicks(menu, keys);
        EXPECT_EQ(menu->actions().indexOf(menu->activeAction()), found) << keys;
        QTest::qWait(QApplication::keyboardInputInterval() + 50);
    }
    menu->close();
    menuItems().first()->trigger();
    EXPECT_EQ(rows(), QStringList({path("app2"), path("app1")}));
    EXPECT_EQ(menuTexts(), QStringList({"R&&D 3", "", "Other Application..."}));
    m_Daemon.die();
    EXPECT_EQ(menuTexts(), QStringList({"", "Other Application..."}));
}

TEST_F(PreferencesControllerTest, AnotherApplicationIsAProgramThatIsNotListedYet) {
    m_Config->setAllowDenyAppsMode(1);
    m_Config->setAllowDenyAppsList({makeFile("listed")});
    QFile::link(makeFile("target"), path("link"));
    makeFile("text", false);
    open();
    const auto chooseFile = [this](const QString& name) {
        menuItems().last()->trigger();
        auto* panel = m_Sheet->findChild<QFileDialog*>();
        panel->setDirectory(m_Folder.path());
        panel->selectFile(path(name));
        QMetaObject::invokeMethod(panel, "accept");
        const bool isRefused = panel->isVisible();
        delete panel;
        return !isRefused;
    };
    EXPECT_TRUE(chooseFile("listed"));
    EXPECT_FALSE(chooseFile("text"));
    EXPECT_TRUE(chooseFile("link"));
    EXPECT_EQ(rows(), QStringList({path("listed"), path("link")})) << "a link is not followed";
}

TEST_F(PreferencesControllerTest, CleansAtOnceAndNeverByTheReturnKey) {
    open();
    EXPECT_FALSE(outlet("m_CleanAllDataBtn")->autoDefault());
    QTest::mouseClick(outlet("m_CleanAllDataBtn"), Qt::LeftButton);
    EXPECT_EQ(sent(cleanEvent), 1);
    outlet("m_CleanAllDataBtn")->setFocus();
    QTest::keyClick(outlet("m_CleanAllDataBtn"), Qt::Key_Return);
    EXPECT_EQ(sent(cleanEvent), 1);
    EXPECT_FALSE(m_Sheet->isVisible());
}

TEST_F(PreferencesControllerTest, SaysBeforehandWhichFileCannotBeWritten) {
    open();
    EXPECT_FALSE(outlet<QWidget>("m_UnwritableNotice")->isVisible());
    m_Controller.reset();
    ConfigStorage unwritable(path("none/system").toStdString(), path("user").toStdString());
    m_Controller = std::make_unique<PreferencesController>(unwritable);
    open();
    auto* notice = outlet<QWidget>("m_UnwritableNotice");
    EXPECT_TRUE(notice->isVisible());
    EXPECT_EQ(notice->findChildren<QLabel*>().last()->text(), path("none/system"));
    EXPECT_TRUE(outlet<QComboBox>("m_MaxStoreMonths")->isEnabled());
    m_Controller.reset();
}

TEST_F(PreferencesControllerTest, NoTwoControlsHaveTheSameMnemonic) {
    open();
    QSet<QKeySequence> mnemonics;
    for (const QWidget* widget : m_Sheet->findChildren<QWidget*>()) {
        const QKeySequence mnemonic = QKeySequence::mnemonic(widget->property("text").toString());
        EXPECT_FALSE(mnemonics.contains(mnemonic)) << widget->objectName().toStdString();
        mnemonics += mnemonic.isEmpty() ? QSet<QKeySequence>() : QSet{mnemonic};
    }
    EXPECT_EQ(mnemonics.size(), 7);
}

}  // namespace
