// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/ApplicationNames.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/support/TemporaryFolder.h"

namespace service {
namespace {

namespace fs = std::filesystem;

/** A machine made up in a folder: programs in "bin" and below "opt", entries of a user and of the system. */
class ApplicationNamesTest : public testing::Test {
  protected:
    ApplicationNamesTest() {
        m_Places = {.entryFolders = {m_Folder / "own", m_Folder / "system"},
                    .programFolders = {m_Folder / "bin"},
                    .languages = languagesOf("de_AT.UTF-8"),
                    .processes = m_Folder / "proc"};
    }

    fs::path write(const fs::path& name, const std::string& text) {
        fs::create_directories((m_Folder / name).parent_path());
        std::ofstream(m_Folder / name) << text;
        return m_Folder / name;
    }

    std::string program(const fs::path& name) {
        const fs::path file = write(name, "");
        fs::permissions(file, fs::perms::owner_exec, fs::perm_options::add);
        return file;
    }

    void entry(const fs::path& file, const std::string& name, const std::string& lines) {
        write(file, "# made up\n[Desktop Entry]\nType=Application\nName=" + name + "\n" + lines +
                        "\n[Desktop Action new]\nName=Wrong\nExec=wrong\n");
    }

    std::string nameOf(const std::string& path) { return ApplicationNames(m_Places).identify(path, 7)->name; }

    TemporaryFolder m_Temporary;
    fs::path m_Folder = fs::canonical(m_Temporary.path());
    NamingPlaces m_Places;
};

TEST_F(ApplicationNamesTest, TheEntryThatOwnsTheExecutableNamesItInTheLanguageOfTheDaemon) {
    const std::string mail = program("bin/mail");
    const std::string editor = program("opt/editor.gtk");
    const std::string game = program("opt/My Game/game");
    fs::create_symlink(editor, m_Folder / "bin/editor");
    entry("system/mail.desktop", "Mail", "Exec=env LANG=C DEBUG= mail %U\nName[fr]=Courrier\nName[de]=Post");
    entry("system/nested/editor.desktop", "Editor\\s2", "Exec=editor");
    entry("system/game.desktop", "Game", "Exec=\"" + m_Folder.string() + "/opt/My Game/game\" --kiosk");
    EXPECT_EQ(nameOf(mail), "Post");
    EXPECT_EQ(nameOf(editor), "Editor 2");
    EXPECT_EQ(nameOf(game), "Game");
    EXPECT_EQ(nameOf(program("bin/wrong")), "wrong");
    EXPECT_EQ(nameOf("/somewhere/\xff"), "\xef\xbf\xbd");
}

TEST_F(ApplicationNamesTest, AnApplicationsOwnFolderNamesWhatItsLauncherStarts) {
    const std::string folder = m_Folder / "opt/office";
    program("opt/office/soffice");
    program("bin/writer");
    fs::create_symlink(folder + "/soffice", m_Folder / "bin/office");
    entry("system/a.desktop", "Office Writer", "Exec=office --writer");
    entry("system/b.desktop", "Office", "Exec=office %U");
    entry("system/c.desktop", "Browser", "Exec=browser");  // a script that starts opt/browser/browser
    program("bin/browser");
    EXPECT_EQ(nameOf(folder + "/soffice.bin"), "Office");
    EXPECT_EQ(nameOf("/opt/browser/browser"), "Browser");
    EXPECT_EQ(nameOf(m_Folder / "bin/writer"), "writer");
    EXPECT_EQ(nameOf("/usr/bin/browser"), "browser") << "another program that happens to be called so";
}

TEST_F(ApplicationNamesTest, AnInterpreterIsNotWhatItRuns) {
    for (const std::string name : {"python3", "sh", "flatpak"}) {
        program("bin/" + name);
    }
    entry("system/a.desktop", "Tool", "Exec=python3 /usr/share/tool/tool.py");
    entry("system/b.desktop", "Tool", "Exec=sh -c 'exec tool'\nTryExec=tool");
    entry("system/c.desktop", "Tool", "Exec=flatpak run org.example.Tool");
    EXPECT_EQ(nameOf(m_Folder / "bin/python3"), "python3");
    EXPECT_EQ(nameOf(m_Folder / "bin/sh"), "sh");
    EXPECT_EQ(nameOf(m_Folder / "bin/flatpak"), "flatpak");
}

TEST_F(ApplicationNamesTest, AUsersEntryHidesTheSystemsAndWhatNoMenuShowsNamesNothing) {
    const std::string mail = program("bin/mail");
    const std::string hidden = program("bin/hidden");
    entry("own/mail.desktop", "My mail", "Exec=mail");
    entry("system/mail.desktop", "Mail", "Exec=mail");
    entry("own/hidden.desktop", "Hidden", "Hidden=true");
    entry("system/hidden.desktop", "Hidden", "Exec=hidden");
    entry("system/helper.desktop", "Helper", "Exec=hidden\nNoDisplay=true");
    EXPECT_EQ(nameOf(mail), "My mail");
    EXPECT_EQ(nameOf(hidden), "hidden");
}

TEST_F(ApplicationNamesTest, AFlatpaksProgramIsFoundOutsideItsSandbox) {
    const std::string app = "/var/lib/flatpak/app/org.example.Paint/x86_64/stable";
    write("proc/7/root/.flatpak-info",
          "[Application]\nname=org.example.Paint\n\n[Instance]\napp-path=" + app + "/0123abcd/files\n");
    entry("system/org.example.Paint.Extra.desktop", "Extra",
          "Exec=flatpak run x\nX-Flatpak=org.example.Paint");
    entry("system/org.example.Paint.desktop", "Paint", "Exec=flatpak run x\nX-Flatpak=org.example.Paint");
    ApplicationNames names(m_Places);
    const auto application = names.identify("/app/bin/paint", 7);
    EXPECT_EQ(application->path, app + "/active/files/bin/paint");
    EXPECT_EQ(application->name, "Paint");
    EXPECT_EQ(application, names.identify("/app/bin/paint", 7));
    EXPECT_EQ(names.identify("/app/bin/paint", 8)->path, "/app/bin/paint") << "the process has ended";
}

TEST_F(ApplicationNamesTest, ASnapKeepsItsPathThroughUpdates) {
    entry("system/mailer_mailer.desktop", "Mailer", "Exec=/snap/bin/mailer\nX-SnapInstanceName=mailer");
    ApplicationNames names(m_Places);
    const auto application = names.identify("/snap/mailer/12/usr/lib/mailer/mailer.bin", 7);
    EXPECT_EQ(application->path, "/snap/mailer/current/usr/lib/mailer/mailer.bin");
    EXPECT_EQ(application->name, "Mailer");
    EXPECT_EQ(application, names.identify("/snap/mailer/x13/usr/lib/mailer/mailer.bin", 7));
    EXPECT_EQ(nameOf("/snap/other/1/bin/other"), "other");
}

TEST_F(ApplicationNamesTest, EntriesThatComeAndGoAreNoticed) {
    const std::string mail = program("bin/mail");
    fs::create_directories(m_Folder / "system");
    DesktopNames names(m_Places);
    EXPECT_FALSE(names.refresh());
    entry("own/mail/mail.desktop", "Mail", "Exec=mail");  // in a folder that was not there
    EXPECT_TRUE(names.refresh());
    EXPECT_EQ(names.nameOf(mail), "Mail");
    EXPECT_FALSE(names.refresh());
    fs::remove_all(m_Folder / "own");
    EXPECT_TRUE(names.refresh());
    EXPECT_EQ(names.nameOf(mail), "");
}

}  // namespace
}  // namespace service
