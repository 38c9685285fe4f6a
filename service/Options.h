// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "service/capture/CaptureMode.h"
#include "service/server/ListenAddress.h"

namespace service {

/** What the daemon was started with. */
struct Options {
    bool demo = false;
    std::string database;  ///< empty: the default place
    std::string config;    ///< the settings file; empty: the whole system's
    ListenAddress listen;
    std::optional<CaptureMode> capture;  ///< never together with `demo`
};

/** A command line as it was understood. */
struct CommandLine {
    enum class Action { Serve, ShowStatus, ShowHelp, ShowVersion, ShowError };

    Action action = Action::Serve;
    Options options;    ///< for `Serve`; of `ShowStatus` the database alone
    std::string error;  ///< for `ShowError`: what is wrong, for a person
};

/** Understands the arguments behind the program's name; `--help` and `--version` go before anything else. */
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/** How to start the daemon, a text of several lines. */
std::string usage();

}  // namespace service
