// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/naming/ApplicationNames.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

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
                    .launcherFolders = {m_Folder / "bin"},
                    .packageFolders = {m_Folder / "opt"},
                    .languages = languagesOf("de_AT.UTF-8"),
                    .processes = m_Folder / "proc",
                    .root = m_Folder};
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

    std::string nameOf(const std::string& path) {
        return ApplicationNames(m_Places).applicationAt(path)->name;
    }

    /** A program with another root than the machine's, whose process 7 has ended or lives. */
    Program apart(const std::string& path, const fs::path& file, std::uint32_t mountNamespace = 77) {
        struct stat facts {};
        ::stat(file.c_str(), &facts);
        return {path, 7, facts.st_dev, facts.st_ino, true, mountNamespace};
    }

    void process(int id, std::uint32_t mountNamespace, const std::string& group) {
        const fs::path folder = "proc/" + std::to_string(id);
        write(folder / "cgroup", "0::" + group + "\n");
        fs::create_directories(m_Folder / folder / "ns");
        fs::create_symlink("mnt:[" + std::to_string(mountNamespace) + "]", m_Folder / folder / "ns/mnt");
    }

    std::string find(const Program& program) { return ApplicationNames(m_Places).find(program); }

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
    EXPECT_EQ(nameOf(find({.path = "/somewhere/\xff"})), "\xef\xbf\xbd");
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
    EXPECT_EQ(nameOf(m_Folder / "opt/browser/browser"), "Browser");
    EXPECT_EQ(nameOf(m_Folder / "bin/writer"), "writer");
}

TEST_F(ApplicationNamesTest, AFileOfTheSameNameOrInAUsersFolderIsNobodys) {
    const std::string image = program("home/Downloads/editor.AppImage");
    program("bin/browser");
    entry("system/browser.desktop", "Browser", "Exec=browser");
    entry("own/editor.desktop", "Editor", "Exec=" + image);
    EXPECT_EQ(nameOf(image), "Editor");
    EXPECT_EQ(nameOf(m_Folder / "home/Downloads/other"), "other");
    EXPECT_EQ(nameOf(m_Folder / "home/.cache/browser/browser"), "browser");
    EXPECT_EQ(nameOf(m_Folder / "opt/other/browser"), "browser");
    EXPECT_EQ(nameOf("/home/flatpak/app/org.example.Tool/x"), "x");
}

TEST_F(ApplicationNamesTest, AnInterpreterIsNotWhatItRuns) {
    for (const std::string name : {"python3.11", "sh", "flatpak", "terminal"}) {
        program("bin/" + name);
    }
    fs::create_symlink("python3.11", m_Folder / "bin/python3");
    fs::create_symlink("python3.11", m_Folder / "bin/tool-link");
    entry("system/a.desktop", "Tool", "Exec=python3 -u /usr/share/tool/tool.py");
    entry("system/b.desktop", "Tool", "Exec=sh -c 'exec tool'\nTryExec=tool");
    entry("system/c.desktop", "Tool", "Exec=flatpak run org.example.Tool");
    entry("system/d.desktop", "Tool", "Exec=python3 tool.py\nTryExec=" + (m_Folder / "bin/python3").string());
    entry("system/e.desktop", "Tool", "Exec=tool-link");
    entry("system/f.desktop", "Tool", "Exec=terminal --wait -e tool\nTryExec=terminal");
    EXPECT_EQ(nameOf(m_Folder / "bin/python3.11"), "python3.11");
    EXPECT_EQ(nameOf(m_Folder / "bin/sh"), "sh");
    EXPECT_EQ(nameOf(m_Folder / "bin/flatpak"), "flatpak");
    EXPECT_EQ(nameOf(m_Folder / "bin/terminal"), "terminal");
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
    const fs::path folder = ".local/share/flatpak/app/org.example.Paint/x86_64/stable";
    const fs::path file = program(folder / "0123abcd/files/bin/paint");
    process(7, 77, "/user.slice/app.slice/app-flatpak.scope");
    write("proc/7/root/.flatpak-info", "[Application]\nname=org.example.Paint\n\n[Instance]\napp-path=" +
                                           (m_Folder / folder).string() + "/0123abcd/files\n");
    entry("system/org.example.Paint.Extra.desktop", "Extra",
          "Exec=flatpak run x\nX-Flatpak=org.example.Paint");
    entry("system/org.example.Paint.desktop", "Paint", "Exec=flatpak run x\nX-Flatpak=org.example.Paint");
    const std::string found = find(apart("/app/bin/paint", file));
    EXPECT_EQ(found, m_Folder / folder / "active/files/bin/paint");
    EXPECT_EQ(nameOf(found), "Paint");
    EXPECT_EQ(find(apart("/app/bin/paint", program("own/paint"))), "(sandbox)/app/bin/paint");
    EXPECT_EQ(find(apart("/app/bin/paint", file, 78)), "(sandbox)/app/bin/paint") << "nobody is left there";
}

TEST_F(ApplicationNamesTest, ASnapKeepsItsPathThroughUpdates) {
    entry("system/mailer_mailer.desktop", "Mailer", "Exec=/snap/bin/mailer\nX-SnapInstanceName=mailer");
    const std::string found = find({.path = "/snap/mailer/12/usr/lib/mailer/mailer.bin"});
    EXPECT_EQ(found, "/snap/mailer/current/usr/lib/mailer/mailer.bin");
    EXPECT_EQ(nameOf(found), "Mailer");
    EXPECT_EQ(found, find({.path = "/snap/mailer/x13/usr/lib/mailer/mailer.bin"}));
    EXPECT_EQ(nameOf(find({.path = "/snap/other/1/bin/other"})), "other");
}

TEST_F(ApplicationNamesTest, WithAnotherRootAPathIsTheMachinesOnlyIfItsFileIs) {
    const std::string mail = program("bin/mail");
    entry("system/mail.desktop", "Mail", "Exec=mail");
    EXPECT_EQ(find(apart(mail, mail)), mail);
    const std::string other = find(apart(mail, program("own/mail")));
    EXPECT_EQ(other, "(sandbox)" + mail);
    EXPECT_EQ(nameOf(other), "mail (sandbox)");
}

TEST_F(ApplicationNamesTest, AContainersProgramsAreItsOwn) {
    const std::string id(64, 'c');
    const std::string pod(64, 'd');
    write("var/lib/docker/containers/" + id + "/config.v2.json",
          R"({"Name":"no","ID":")" + id + R"(","Name":"/web"})");
    write("var/log/containers/shop-1_default_web-" + pod + ".log", "");
    write("var/lib/containers/storage/overlay-containers/containers.json",
          R"([{"id":")" + std::string(64, 'e') + R"(","names":["first"]},{"id":")" + std::string(64, 'f') +
              R"(","names":["second"]}])");
    const std::vector<std::pair<std::string, std::string>> groups{
        {"/system.slice/docker-" + id + ".scope/init", "web:/bin/mail"},
        {"/docker/" + id, "web:/bin/mail"},
        {"/kubepods.slice/pod1.slice/cri-containerd-" + pod + ".scope", "shop-1_default_web:/bin/mail"},
        {"/machine.slice/libpod-" + std::string(64, 'f') + ".scope/container", "second:/bin/mail"},
        {"/machine.slice/libpod-" + std::string(64, 'a') + ".scope", "aaaaaaaaaaaa:/bin/mail"},
        {"/lxc.payload.news/user.slice", "news:/bin/mail"},
        {"/machine.slice/machine-my\\x2dguest.scope", "my-guest:/bin/mail"},
        {"/user.slice/user-4294967294.slice/docker-" + id + ".scope", "cccccccccccc:/bin/mail"},
        {"/system.slice/cron.service", "(sandbox)/bin/mail"}};
    const std::string mail = program("elsewhere/mail");
    entry("system/mail.desktop", "Mail", "Exec=" + mail);
    for (const auto& [group, path] : groups) {
        process(8, 77, group);  // which is in the same place as a program that has ended
        EXPECT_EQ(find(apart("/bin/mail", mail)), path);
        fs::remove_all(m_Folder / "proc");
    }
    EXPECT_EQ(nameOf("web:/bin/mail"), "mail (web)");
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
