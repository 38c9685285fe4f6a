// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/demo/DemoProfiles.h"

#include <cstdint>
#include <utility>

namespace service {

namespace {

using namespace std::chrono_literals;
using enum Direction;

constexpr double kB = 1'000;  // bytes

constexpr std::int32_t icmp = 1;
constexpr std::int32_t udp = 17;
constexpr std::int32_t icmpv6 = 58;

// A table is read by the line: two for each flow at most, peers and then pace.
// clang-format off

constexpr DemoHabit aroundTheClock{
    .tenths = {10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10}};
constexpr DemoHabit whileAwake{
    .tenths = {0, 0, 0, 0, 0, 0, 1, 2, 4, 4, 4, 3, 2, 3, 4, 4, 4, 4, 3, 3, 4, 4, 3, 1}, .weekend = 0.8};
constexpr DemoHabit officeHours{
    .tenths = {0, 0, 0, 0, 0, 0, 0, 1, 5, 6, 6, 6, 2, 5, 6, 6, 5, 3, 1, 0, 0, 0, 0, 0}, .weekend = 0.05};
constexpr DemoHabit evenings{
    .tenths = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 2, 4, 5, 5, 4, 2},
    .weekday = 0.35, .weekend = 1.6};
constexpr DemoHabit daytimeOfWeekend{
    .tenths = {0, 0, 0, 0, 0, 0, 0, 0, 1, 3, 5, 5, 4, 4, 5, 6, 6, 5, 4, 3, 3, 3, 1, 0}, .weekday = 0.15};
constexpr DemoHabit nightsAndEvenings{
    .tenths = {6, 6, 6, 6, 5, 4, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 3, 4, 4, 5, 6, 6}, .weekday = 0.5};
constexpr DemoHabit atNight{
    .tenths = {7, 10, 10, 8, 5, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 4}};
constexpr DemoHabit inTheMorning{
    .tenths = {0, 0, 0, 0, 0, 0, 3, 8, 8, 5, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}};

std::vector<DemoProfile> makeProfiles() {
    return {
        // The system itself
        {.name = "Kernel",
         .path = "",
         .habit = aroundTheClock,
         .keenness = 0.6,
         .flows = {{.protocol = icmp, .direction = Undefined, .hosts = 4,
                    .life = 20s, .pause = 90s, .received = 30, .sent = 25},
                   {.protocol = icmpv6, .direction = Undefined, .inLan = true, .hosts = 3, .ipv6Share = 1,
                    .life = 15s, .pause = 60s, .received = 25, .sent = 20}}},
        {.name = "systemd-resolved",
         .path = "/usr/lib/systemd/systemd-resolved",
         .habit = aroundTheClock,
         .flows = {{.protocol = udp, .port = 53, .inLan = true, .ipv6Share = 0.3,
                    .life = 3s, .pause = 8s, .received = 300, .sent = 120}}},
        {.name = "chronyd",
         .path = "/usr/sbin/chronyd",
         .habit = aroundTheClock,
         .flows = {{.protocol = udp, .port = 123, .hosts = 4, .ipv6Share = 0.5,
                    .life = 4s, .pause = 5min, .received = 24, .sent = 24}}},
        {.name = "avahi-daemon",
         .path = "/usr/sbin/avahi-daemon",
         .habit = aroundTheClock,
         .keenness = 0.5,
         .flows = {{.protocol = udp, .direction = Input, .port = 5353, .inLan = true, .hosts = 6, .ipv6Share = 0.4,
                    .life = 3min, .pause = 2min, .received = 60, .sent = 30}}},
        {.name = "CUPS",
         .path = "/usr/sbin/cupsd",
         .habit = officeHours,
         .keenness = 0.08,
         .flows = {{.port = 631, .inLan = true,
                    .life = 25s, .pause = 6min, .received = 1 * kB, .sent = 40 * kB}}},
        {.name = "PackageKit",
         .path = "/usr/libexec/packagekitd",
         .habit = inTheMorning,
         .keenness = 0.15,
         .flows = {{.port = 443, .hosts = 5, .ipv6Share = 0.6,
                    .life = 40s, .pause = 10min, .received = 160 * kB, .sent = 4 * kB}}},
        {.name = "apt",
         .path = "/usr/lib/apt/methods/http",
         .habit = inTheMorning,
         .keenness = 0.12,
         .flows = {{.port = 80, .hosts = 3, .ipv6Share = 0.5,
                    .life = 30s, .pause = 4min, .received = 180 * kB, .sent = 3 * kB, .swing = 0.5}}},

        // Web and mail
        {.name = "Firefox ESR",
         .path = "/usr/lib/firefox-esr/firefox-esr",
         .habit = whileAwake,
         .flows = {{.port = 443, .hosts = 80, .ipv6Share = 0.4, .lanes = 4,
                    .life = 14s, .pause = 25s, .received = 4 * kB, .sent = 500, .swing = 1},
                   {.port = 80, .hosts = 20, .life = 5s, .pause = 4min, .received = 4 * kB, .sent = 600},
                   {.protocol = udp, .port = 443, .hosts = 25, .ipv6Share = 0.6,
                    .life = 6min, .pause = 30min, .received = 30 * kB, .sent = 1 * kB, .swing = 1}}},
        {.name = "Chromium",
         .path = "/usr/lib/chromium/chromium",
         .habit = evenings,
         .flows = {{.port = 443, .hosts = 60, .ipv6Share = 0.5, .lanes = 3,
                    .life = 12s, .pause = 20s, .received = 6 * kB, .sent = 700, .swing = 1},
                   {.protocol = udp, .port = 443, .hosts = 15, .ipv6Share = 0.7,
                    .life = 12min, .pause = 40min, .received = 60 * kB, .sent = 1.5 * kB, .swing = 1}}},
        {.name = "Tor Browser",
         .path = "/home/zoë/.local/share/torbrowser/tbb/x86_64/tor-browser/Browser/firefox.real",
         .habit = evenings,
         .keenness = 0.1,
         .flows = {{.port = 9001, .hosts = 12, .lanes = 2,
                    .life = 8min, .pause = 6min, .received = 8 * kB, .sent = 1 * kB}},
         .lastDaysAgo = 140},
        {.name = "Thunderbird",
         .path = "/usr/lib/thunderbird/thunderbird",
         .habit = whileAwake,
         .flows = {{.port = 993, .hosts = 2, .ipv6Share = 0.3,
                    .life = 50min, .pause = 90s, .received = 250, .sent = 60, .swing = 1},
                   {.port = 465, .hosts = 2, .life = 6s, .pause = 12min, .received = 400, .sent = 15 * kB}}},

        // Talking
        {.name = "Signal",
         .path = "/opt/Signal/signal-desktop",
         .habit = whileAwake,
         .flows = {{.port = 443, .hosts = 3, .life = 40min, .pause = 2min, .received = 700, .sent = 400},
                   {.protocol = udp, .port = 3478, .hosts = 4, .ipv6Share = 0.2,
                    .life = 7min, .pause = 20h, .received = 30 * kB, .sent = 30 * kB, .swing = 0.3}},
         .firstDaysAgo = 290},
        {.name = "Element",
         .path = "/var/lib/flatpak/app/im.riot.Riot/x86_64/stable/"
                 "9a7c1d0be4f2c8d35a60e1b7f4d9283c5e6071ab8f9d4c2e3b5a6d7f8091a2b3/files/Element/element-desktop",
         .habit = officeHours,
         .flows = {{.port = 443, .hosts = 4, .ipv6Share = 0.8, .lanes = 2,
                    .life = 4min, .pause = 1min, .received = 600, .sent = 200}},
         .firstDaysAgo = 120},
        {.name = "Jitsi Meet",
         .path = "/home/zoë/Téléchargements/jitsi-meet-x86_64.AppImage",
         .habit = officeHours,
         .keenness = 0.07,
         .flows = {{.protocol = udp, .port = 10000, .hosts = 3, .ipv6Share = 0.3,
                    .life = 25min, .pause = 10min, .received = 60 * kB, .sent = 45 * kB, .swing = 0.35},
                   {.port = 443, .hosts = 3,
                    .life = 30min, .pause = 5min, .received = 2 * kB, .sent = 1 * kB}}},
        {.name = "Mumble",
         .path = "/usr/bin/mumble",
         .habit = evenings,
         .keenness = 0.3,
         .flows = {{.protocol = udp, .port = 64738, .hosts = 2,
                    .life = 50min, .pause = 10min, .received = 6 * kB, .sent = 4 * kB, .swing = 0.6},
                   {.port = 64738, .hosts = 2, .life = 50min, .pause = 10min, .received = 150, .sent = 90}}},

        // Films, music, games
        {.name = "Rhythmbox",
         .path = "/usr/bin/rhythmbox",
         .habit = whileAwake,
         .keenness = 0.2,
         .flows = {{.port = 8000, .hosts = 6,
                    .life = 45min, .pause = 3min, .received = 12 * kB, .sent = 200, .swing = 0.2}}},
        {.name = "VLC",
         .path = "/var/lib/flatpak/app/org.videolan.VLC/x86_64/stable/active/files/bin/vlc",
         .habit = evenings,
         .keenness = 0.2,
         .flows = {{.port = 443, .hosts = 8, .ipv6Share = 0.5,
                    .life = 35min, .pause = 15min, .received = 90 * kB, .sent = 1.5 * kB, .swing = 1}}},
        {.name = "yt-dlp",
         .path = "/home/zoë/.local/bin/yt-dlp",
         .habit = daytimeOfWeekend,
         .keenness = 0.15,
         .flows = {{.port = 443, .hosts = 10, .ipv6Share = 0.6,
                    .life = 2min, .pause = 5min, .received = 200 * kB, .sent = 3 * kB, .swing = 0.4}},
         .firstDaysAgo = 210},
        {.name = "SuperTuxKart",
         .path = "/usr/games/supertuxkart",
         .habit = evenings,
         .keenness = 0.2,
         .flows = {{.protocol = udp, .port = 2759, .hosts = 5, .ipv6Share = 0.3,
                    .life = 6min, .pause = 3min, .received = 8 * kB, .sent = 3 * kB, .swing = 0.5},
                   {.port = 443, .hosts = 2,
                    .life = 8s, .pause = 10min, .received = 20 * kB, .sent = 1 * kB}}},
        {.name = "Minetest",
         .path = "/usr/games/minetest",
         .habit = daytimeOfWeekend,
         .keenness = 0.5,
         .flows = {{.protocol = udp, .port = 30000, .hosts = 3,
                    .life = 40min, .pause = 15min, .received = 5 * kB, .sent = 1.5 * kB, .swing = 0.7}},
         .lastDaysAgo = 95},

        // Files: sharing, clouds, copies
        {.name = "Transmission",
         .path = "/usr/bin/transmission-gtk",
         .habit = nightsAndEvenings,
         .keenness = 0.4,
         .flows = {{.port = 51413, .hosts = 120, .ipv6Share = 0.25, .lanes = 2,
                    .life = 4min, .pause = 90s, .received = 2 * kB, .sent = 800},
                   {.direction = Input, .port = 51413, .hosts = 150, .ipv6Share = 0.25, .lanes = 2,
                    .life = 5min, .pause = 2min, .received = 150, .sent = 2 * kB},
                   {.protocol = udp, .direction = Input, .port = 51413, .hosts = 150, .ipv6Share = 0.35, .lanes = 2,
                    .life = 3min, .pause = 1min, .received = 1 * kB, .sent = 1.5 * kB}}},
        {.name = "Nextcloud",
         .path = "/usr/bin/nextcloud",
         .habit = whileAwake,
         .flows = {{.port = 443, .ipv6Share = 1, .lanes = 2,
                    .life = 45s, .pause = 2min, .received = 1.2 * kB, .sent = 1.5 * kB, .swing = 1}}},
        {.name = "Syncthing",
         .path = "/usr/bin/syncthing",
         .habit = aroundTheClock,
         .keenness = 0.6,
         .flows = {{.direction = Input, .port = 22000, .inLan = true, .hosts = 3, .ipv6Share = 0.5,
                    .life = 40min, .pause = 20min, .received = 200, .sent = 350},
                   {.protocol = udp, .port = 21027, .inLan = true, .hosts = 3,
                    .life = 3s, .pause = 50s, .received = 140, .sent = 140}},
         .firstDaysAgo = 250},
        {.name = "Déjà Dup",
         .path = "/usr/bin/deja-dup",
         .habit = atNight,
         .keenness = 0.03,
         .flows = {{.port = 443, .hosts = 2,
                    .life = 30min, .pause = 10min, .received = 2 * kB, .sent = 90 * kB, .swing = 0.6}}},
        {.name = "rsync",
         .path = "/usr/bin/rsync",
         .habit = atNight,
         .keenness = 0.07,
         .flows = {{.port = 873, .inLan = true, .hosts = 1, .ipv6Share = 1,
                    .life = 5min, .pause = 10min, .received = 1 * kB, .sent = 60 * kB, .swing = 0.6}}},

        // Work
        {.name = "OpenSSH",
         .path = "/usr/bin/ssh",
         .habit = officeHours,
         .keenness = 0.7,
         .flows = {{.port = 22, .hosts = 9, .ipv6Share = 0.4, .lanes = 2,
                    .life = 25min, .pause = 15min, .received = 700, .sent = 200, .swing = 1}}},
        {.name = "sshd",
         .path = "/usr/sbin/sshd",
         .habit = aroundTheClock,
         .keenness = 0.1,
         .flows = {{.direction = Input, .port = 22, .hosts = 40, .ipv6Share = 0.1,
                    .life = 20s, .pause = 8min, .received = 300, .sent = 500}}},
        {.name = "Git",
         .path = "/usr/lib/git-core/git-remote-https",
         .habit = officeHours,
         .keenness = 0.6,
         .flows = {{.port = 443, .hosts = 3, .ipv6Share = 0.1,
                    .life = 7s, .pause = 9min, .received = 110 * kB, .sent = 9 * kB}}},
        {.name = "VSCodium",
         .path = "/snap/codium/338/usr/share/codium/codium",
         .habit = officeHours,
         .flows = {{.port = 443, .hosts = 7, .lanes = 2,
                    .life = 20s, .pause = 6min, .received = 10 * kB, .sent = 2 * kB}}},
        {.name = "PostgreSQL",
         .path = "/usr/lib/postgresql/15/bin/postgres",
         .habit = officeHours,
         .keenness = 0.8,
         .flows = {{.direction = Input, .port = 5432, .inLan = true, .hosts = 8, .ipv6Share = 0.2, .lanes = 2,
                    .life = 3min, .pause = 3min, .received = 200, .sent = 1.2 * kB}}},
        {.name = "Docker",
         .path = "/usr/bin/dockerd",
         .habit = officeHours,
         .keenness = 0.08,
         .flows = {{.port = 443, .hosts = 6, .ipv6Share = 0.5, .lanes = 2,
                    .life = 50s, .pause = 10min, .received = 200 * kB, .sent = 3 * kB, .swing = 0.5}}},
        {.name = "OpenVPN",
         .path = "/usr/sbin/openvpn",
         .habit = officeHours,
         .keenness = 0.4,
         .flows = {{.protocol = udp, .port = 1194,
                    .life = 90min, .pause = 1min, .received = 3 * kB, .sent = 1 * kB, .swing = 1}},
         .lastDaysAgo = 60},
        {.name = "ping",
         .path = "/usr/bin/ping",
         .habit = officeHours,
         .keenness = 0.1,
         .flows = {{.protocol = icmp, .hosts = 5,
                    .life = 30s, .pause = 10min, .received = 84, .sent = 84, .swing = 0}}},
    };
}

std::vector<DemoProfile> makeNewcomers() {
    const auto newcomer = [](const char* name, const char* path, std::vector<DemoFlow> flows) {
        return DemoProfile{.name = name, .path = path, .habit = aroundTheClock, .flows = std::move(flows)};
    };
    return {
        newcomer("curl", "/usr/bin/curl",
                 {{.port = 443, .hosts = 4,
                   .life = 25s, .pause = 50s, .received = 160 * kB, .sent = 4 * kB}}),
        newcomer("FileZilla", "/usr/bin/filezilla",
                 {{.port = 21, .hosts = 2, .life = 6min, .pause = 1min, .received = 150, .sent = 90},
                  {.port = 50017, .hosts = 2,
                   .life = 40s, .pause = 30s, .received = 9 * kB, .sent = 110 * kB}}),
        newcomer("Stellarium", "/usr/bin/stellarium",
                 {{.port = 443, .hosts = 3, .ipv6Share = 1,
                   .life = 8s, .pause = 40s, .received = 70 * kB, .sent = 2 * kB}}),
        newcomer("Wesnoth", "/usr/games/wesnoth-1.16",
                 {{.port = 15000, .life = 15min, .pause = 1min, .received = 3 * kB, .sent = 800}}),
        newcomer("Blender", "/opt/blender-4.2/blender",
                 {{.port = 443, .hosts = 5,
                   .life = 20s, .pause = 45s, .received = 210 * kB, .sent = 5 * kB}}),
        newcomer("KDE Connect", "/usr/lib/x86_64-linux-gnu/libexec/kdeconnectd",
                 {{.direction = Input, .port = 1716, .inLan = true, .hosts = 2,
                   .life = 10min, .pause = 1min, .received = 400, .sent = 300},
                  {.protocol = udp, .direction = Input, .port = 1716, .inLan = true, .hosts = 3,
                   .life = 2s, .pause = 30s, .received = 300, .sent = 200}}),
        newcomer("Kdenlive", "/home/zoë/Applications/kdenlive-23.08.4-x86_64.AppImage",
                 {{.port = 443, .hosts = 6,
                   .life = 15s, .pause = 1min, .received = 90 * kB, .sent = 3 * kB}}),
        newcomer("Cargo", "/home/zoë/.cargo/bin/cargo",
                 {{.port = 443, .hosts = 2, .ipv6Share = 0.7, .lanes = 2,
                   .life = 6s, .pause = 30s, .received = 240 * kB, .sent = 6 * kB}}),
        newcomer("traceroute", "/usr/bin/traceroute",
                 {{.protocol = icmp, .hosts = 12,
                   .life = 12s, .pause = 1min, .received = 600, .sent = 900},
                  {.protocol = udp, .port = 33434, .hosts = 4, .life = 10s, .pause = 1min, .sent = 700}}),
        newcomer("Shortwave",
                 "/var/lib/flatpak/app/de.haeckerfelix.Shortwave/x86_64/stable/active/files/bin/shortwave",
                 {{.port = 8000, .hosts = 4,
                   .life = 30min, .pause = 1min, .received = 24 * kB, .sent = 400, .swing = 0.2}}),
    };
}

// clang-format on

}  // namespace

const std::vector<DemoProfile>& demoProfiles() {
    static const std::vector<DemoProfile> profiles = makeProfiles();
    return profiles;
}

const std::vector<DemoProfile>& demoNewcomers() {
    static const std::vector<DemoProfile> newcomers = makeNewcomers();
    return newcomers;
}

}  // namespace service
