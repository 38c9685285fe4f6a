// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/** The words that the settings files and their readers share. In files on disk: never rename. */
namespace config {

/** What the two files are named for. */
constexpr char applicationName[] = "Nevtora Meter";

constexpr char captureIntervalKey[] = "CaptureInterval";      ///< months of history, an integer
constexpr char allowDenyAppsModeKey[] = "AllowDenyAppsMode";  ///< 0, 1 or 2, as docs/settings.md tells
constexpr char allowDenyAppsKey[] = "AllowDenyApps";          ///< paths, an array of strings
constexpr char isAutostartedKey[] = "IsAutostarted";          ///< a boolean, in the user's file

/** What counts where a key is absent or of another type; there is no list then. */
constexpr int defaultCaptureInterval = 12;
constexpr int defaultAllowDenyAppsMode = 0;
constexpr bool defaultIsAutostarted = true;

}  // namespace config
