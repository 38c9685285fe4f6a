// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/QV_Config.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "config/FileReplacement.h"
#include "config/PlistFile.h"

struct QV_Config {
    plist_t dictionary;  // owned; whatever the file has at its top
    char* path;          // owned
};

namespace {

using config::PlistNode;

std::string passwordDatabaseHome() {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

std::string homeFolder() {
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? home : passwordDatabaseHome();
}

std::string defaultPath(const std::string& applicationName, bool isSystemWide) {
    return isSystemWide ? "/Library/Preferences/com.qv." + applicationName + ".plist"
                        : homeFolder() + "/." + applicationName + ".conf.plist";
}

plist_t find(const QV_Config* config, const char* name) {
    return config != nullptr && name != nullptr ? config::valueOf(config->dictionary, name) : nullptr;
}

plist_t findArray(const QV_Config* config, const char* name) {
    plist_t value = find(config, name);
    return config::isArray(value) ? value : nullptr;
}

int sizeOf(plist_t value) {
    const auto text = config::stringOf(value);
    return text ? static_cast<int>(text->size()) + 1 : -1;
}

/** `convert` makes an optional of the element's number. */
template <class Value, class Convert>
int get(plist_t value, Value* out, Convert convert) {
    const auto number = convert(value);
    if (out == nullptr || !number) {
        return 0;
    }
    *out = static_cast<Value>(*number);
    return 1;
}

template <class Value, class GetElement>
int getArray(const QV_Config* config, const char* name, Value* out, GetElement getElement) {
    plist_t array = findArray(config, name);
    const std::uint32_t count = array != nullptr ? plist_array_get_size(array) : 0;
    if (array == nullptr || (out == nullptr && count > 0)) {
        return 0;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (getElement(plist_array_get_item(array, i), out + i) == 0) {
            return 0;
        }
    }
    return 1;
}

int copyText(plist_t value, char* buffer, std::size_t maximum) {
    const auto text = config::stringOf(value);
    if (buffer == nullptr || !text) {
        return 0;
    }
    buffer[text->copy(buffer, maximum)] = '\0';
    return 1;
}

int set(QV_Config* config, const char* name, PlistNode value) {
    return config != nullptr && name != nullptr &&
                   config::setValue(config->dictionary, name, std::move(value))
               ? 1
               : 0;
}

template <class Value, class MakeNode>
int setArray(QV_Config* config, const char* name, const Value* values, int count, MakeNode makeNode) {
    PlistNode array(plist_new_array());
    for (int i = 0; i < count; ++i) {
        plist_array_append_item(array.get(), makeNode(values[i]).release());
    }
    return set(config, name, std::move(array));
}

PlistNode doubleNode(double value) {
    return PlistNode(plist_new_real(value));
}

PlistNode boolNode(QV_Bool value) {
    return PlistNode(plist_new_bool(value != 0 ? 1 : 0));
}

PlistNode stringNode(const char* value) {
    return PlistNode(plist_new_string(value));
}

}  // namespace

const char* QV_GetDefaultAppConfigFileName(const char* applicationName, int withSpace) {
    static char buffer[1025];
    const std::string path = applicationName != nullptr ? defaultPath(applicationName, withSpace != 0) : "";
    buffer[path.copy(buffer, sizeof buffer - 1)] = '\0';
    return buffer;
}

QV_Config* QV_OpenConfig(const char* path, int createIfNotExist) {
    const auto file = path != nullptr ? config::readFile(path) : std::nullopt;
    if (path == nullptr || (!file && createIfNotExist == 0)) {
        return nullptr;
    }
    PlistNode dictionary = file ? config::readPlist(*file) : PlistNode(plist_new_dict());
    if (dictionary == nullptr) {
        return nullptr;
    }
    auto* config = static_cast<QV_Config*>(std::malloc(sizeof(QV_Config)));
    *config = {dictionary.release(), strdup(path)};
    return config;
}

int QV_ReloadConfig(QV_Config* config) {
    PlistNode loaded = config != nullptr ? config::loadPlist(config->path) : nullptr;
    if (loaded == nullptr) {
        return 0;
    }
    plist_free(config->dictionary);
    config->dictionary = loaded.release();
    return 1;
}

int QV_SaveConfig(const QV_Config* config) {
    return config != nullptr && config::savePlist(config->path, config->dictionary) ? 1 : 0;
}

void QV_CloseConfig(QV_Config* config) {
    if (config != nullptr) {
        plist_free(config->dictionary);
        std::free(config->path);
        std::free(config);
    }
}

int QV_IsParamExits(const QV_Config* config, const char* name) {
    return find(config, name) != nullptr ? 1 : 0;
}

int QV_DeleteParam(QV_Config* config, const char* name) {
    if (find(config, name) != nullptr) {
        plist_dict_remove_item(config->dictionary, name);
    }
    return config != nullptr && name != nullptr ? 1 : 0;
}

int QV_GetArrayParamSize(const QV_Config* config, const char* name) {
    plist_t array = findArray(config, name);
    return array != nullptr ? static_cast<int>(plist_array_get_size(array)) : -1;
}

int QV_GetStringParamSize(const QV_Config* config, const char* name) {
    return sizeOf(find(config, name));
}

int QV_GetStringArrayParamStringSize(const QV_Config* config, const char* name, int index) {
    const bool isElement = index >= 0 && index < QV_GetArrayParamSize(config, name);
    return isElement
               ? sizeOf(plist_array_get_item(findArray(config, name), static_cast<std::uint32_t>(index)))
               : -1;
}

int QV_GetIntParam(const QV_Config* config, const char* name, int* value) {
    return get(find(config, name), value, config::intOf);
}

int QV_GetDoubleParam(const QV_Config* config, const char* name, double* value) {
    return get(find(config, name), value, config::doubleOf);
}

int QV_GetBoolParam(const QV_Config* config, const char* name, QV_Bool* value) {
    return get(find(config, name), value, config::boolOf);
}

int QV_GetStringParam(const QV_Config* config, const char* name, char* buffer, int maximum) {
    return maximum >= 0 ? copyText(find(config, name), buffer, static_cast<std::size_t>(maximum)) : 0;
}

int QV_GetIntArrayParam(const QV_Config* config, const char* name, int* values) {
    return getArray(config, name, values,
                    [](plist_t element, int* out) { return get(element, out, config::intOf); });
}

int QV_GetDoubleArrayParam(const QV_Config* config, const char* name, double* values) {
    return getArray(config, name, values,
                    [](plist_t element, double* out) { return get(element, out, config::doubleOf); });
}

int QV_GetBoolArrayParam(const QV_Config* config, const char* name, QV_Bool* values) {
    return getArray(config, name, values,
                    [](plist_t element, QV_Bool* out) { return get(element, out, config::boolOf); });
}

int QV_GetStringArrayParam(const QV_Config* config, const char* name, char** buffers) {
    return getArray(config, name, buffers, [](plist_t element, char** buffer) {
        return copyText(element, *buffer, std::string::npos);
    });
}

int QV_SetIntParam(QV_Config* config, const char* name, int value) {
    return set(config, name, config::newInteger(value));
}

int QV_SetDoubleParam(QV_Config* config, const char* name, double value) {
    return set(config, name, doubleNode(value));
}

int QV_SetBoolParam(QV_Config* config, const char* name, QV_Bool value) {
    return set(config, name, boolNode(value));
}

int QV_SetStringParam(QV_Config* config, const char* name, const char* value) {
    return set(config, name, stringNode(value));
}

int QV_SetIntArrayParam(QV_Config* config, const char* name, const int* values, int count) {
    return setArray(config, name, values, count, config::newInteger);
}

int QV_SetDoubleArrayParam(QV_Config* config, const char* name, const double* values, int count) {
    return setArray(config, name, values, count, doubleNode);
}

int QV_SetBoolArrayParam(QV_Config* config, const char* name, const QV_Bool* values, int count) {
    return setArray(config, name, values, count, boolNode);
}

int QV_SetStringArrayParam(QV_Config* config, const char* name, const char* const* values, int count) {
    return setArray(config, name, values, count, stringNode);
}
