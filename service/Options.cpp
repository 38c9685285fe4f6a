// SPDX-License-Identifier: GPL-3.0-or-later
#include "service/Options.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace service {

namespace {

/** An option that is followed by a value. */
struct ValueOption {
    std::string_view name;
    std::string_view expected;                                  ///< what a value is, for a person
    bool (*apply)(Options& options, const std::string& value);  ///< false when the value is no good
};

bool setDatabase(Options& options, const std::string& value) {
    options.database = value;
    return !value.empty();
}

bool setConfig(Options& options, const std::string& value) {
    options.config = value;
    return !value.empty();
}

bool setListen(Options& options, const std::string& value) {
    const std::optional<ListenAddress> address = ListenAddress::parse(value);
    options.listen = address.value_or(options.listen);
    return address.has_value();
}

bool setCapture(Options& options, const std::string& value) {
    options.capture = captureModeFromText(value);
    return options.capture.has_value();
}

constexpr std::array valueOptions{
    ValueOption{"--database", "a file", setDatabase},
    ValueOption{"--listen", "an IPv4 address in numbers and a port, such as 127.0.0.1:10023", setListen},
    ValueOption{"--config", "a file", setConfig},
    ValueOption{"--capture", "auto, bpf, diag or off", setCapture},
};

const ValueOption* findValueOption(std::string_view name) {
    const auto found = std::find_if(valueOptions.begin(), valueOptions.end(),
                                    [name](const ValueOption& option) { return option.name == name; });
    return found == valueOptions.end() ? nullptr : &*found;
}

bool contains(const std::vector<std::string>& arguments, std::string_view text) {
    return std::find(arguments.begin(), arguments.end(), text) != arguments.end();
}

/** Understands the argument at `position` with its value, and moves on behind them; returns what is wrong, or
 * "". */
std::string parseOption(const std::vector<std::string>& arguments, std::size_t& position, Options& options) {
    const std::string& argument = arguments[position++];
    if (argument == "--status") {
        return "";  // seen to already
    }
    if (argument == "--demo") {
        options.demo = true;
        return "";
    }
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const ValueOption* option = findValueOption(name);
    if (option == nullptr) {
        return "unknown argument '" + argument + "'";
    }
    const bool isAttached = equals != std::string::npos;
    if (!isAttached && position == arguments.size()) {
        return name + " needs " + std::string(option->expected);
    }
    if (!isAttached && arguments[position].starts_with("--")) {  // a forgotten value, more likely than not
        return name + " needs " + std::string(option->expected) + " before " + arguments[position];
    }
    const std::string value = isAttached ? argument.substr(equals + 1) : arguments[position++];
    if (!option->apply(options, value)) {
        return name + " needs " + std::string(option->expected) + ", not '" + value + "'";
    }
    return "";
}

std::string parseOptions(const std::vector<std::string>& arguments, Options& options) {
    for (std::size_t position = 0; position < arguments.size();) {
        std::string error = parseOption(arguments, position, options);
        if (!error.empty()) {
            return error;
        }
    }
    return options.demo && options.capture ? "--demo and --capture exclude each other" : "";
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine line;
    if (contains(arguments, "--help")) {
        line.action = CommandLine::Action::ShowHelp;
    } else if (contains(arguments, "--version")) {
        line.action = CommandLine::Action::ShowVersion;
    } else if (line.error = parseOptions(arguments, line.options); !line.error.empty()) {
        line.action = CommandLine::Action::ShowError;
    } else if (contains(arguments, "--status")) {
        line.action = CommandLine::Action::ShowStatus;
        if (line.options.demo && line.options.database.empty()) {
            line.action = CommandLine::Action::ShowError;
            line.error = "--status asks by the history: name that of the demo with --database";
        }
    }
    return line;
}

std::string usage() {
    return "Usage: nevtora-daemon [OPTION]...\n"
           "Counts which application moves how many bytes, keeps the history and serves it to "
           "nevtora-meter.\n"
           "\n"
           "  --demo                 show an invented year of traffic instead of this machine's; without "
           "--database\n"
           "                         it is forgotten when the daemon ends\n"
           "  --database FILE        keep the history in FILE (default: nevtora-meter/history.sqlite in\n"
           "                         $XDG_DATA_HOME or ~/.local/share)\n"
           "  --listen ADDRESS:PORT  wait for clients there (default: 127.0.0.1:10023)\n"
           "  --config FILE          obey the settings in FILE (default:\n"
           "                         /Library/Preferences/com.qv.Nevtora Meter.plist)\n"
           "  --capture SOURCE       where the figures come from: bpf (programs in the kernel, which see "
           "every\n"
           "                         packet), diag (the kernel's socket diagnostics: TCP, once a second), "
           "off,\n"
           "                         or auto, the best that works here (default)\n"
           "  --status               ask the daemon that keeps the history in FILE how it is doing; that of "
           "another\n"
           "                         user tells only him and root\n"
           "  --help                 show this text\n"
           "  --version              show the version\n";
}

}  // namespace service
