/* SPDX-License-Identifier: GPL-3.0-or-later */
#include <string.h>

#include "config/QV_Config.h"

#define STEP(condition)      \
    do {                     \
        if (!(condition)) {  \
            return __LINE__; \
        }                    \
    } while (0)

int store_every_kind(const char* path);
int read_every_kind(const char* path);

int store_every_kind(const char* path) {
    const int integers[] = {1, -2, 3};
    const double doubles[] = {0.1, 1e300};
    const QV_Bool booleans[] = {1, 0, 7};
    const char* strings[] = {"", "/Applications/\xc3\x84pp & <Co>.app", "a\rb\r\nc"};
    QV_Config* config = QV_OpenConfig(path, 1);
    STEP(config != NULL);
    STEP(QV_SetStringParam(config, "int", "to be replaced"));
    STEP(QV_SetIntParam(config, "int", -5));
    STEP(QV_SetDoubleParam(config, "double", 2.0));
    STEP(QV_SetBoolParam(config, "bool", 1));
    STEP(QV_SetStringParam(config, "string <&>", "M\xc3\xa4rz"));
    STEP(QV_SetIntArrayParam(config, "ints", integers, 3));
    STEP(QV_SetDoubleArrayParam(config, "doubles", doubles, 2));
    STEP(QV_SetBoolArrayParam(config, "bools", booleans, 3));
    STEP(QV_SetStringArrayParam(config, "strings", strings, 3));
    STEP(QV_SetIntArrayParam(config, "empty", NULL, 0));
    STEP(QV_SetIntParam(config, "deleted", 1) && QV_DeleteParam(config, "deleted") &&
         QV_DeleteParam(config, "deleted"));
    STEP(QV_SaveConfig(config));
    QV_CloseConfig(config);
    return 0;
}

int read_every_kind(const char* path) {
    int integers[3] = {0, 0, 0};
    double doubles[2] = {0, 0};
    QV_Bool booleans[3] = {9, 9, 9};
    char text[32] = "untouched";
    char rest[64] = "";
    char* buffers[] = {text, rest, rest};
    QV_Config* config = QV_OpenConfig(path, 0);
    STEP(config != NULL);
    STEP(QV_GetIntParam(config, "int", integers) && integers[0] == -5);
    STEP(QV_GetStringParamSize(config, "string <&>") == 6);
    STEP(QV_GetIntArrayParam(config, "ints", integers) && integers[0] == 1 && integers[1] == -2 &&
         integers[2] == 3);
    STEP(QV_GetDoubleArrayParam(config, "doubles", doubles) && doubles[0] == 0.1 && doubles[1] == 1e300);
    STEP(QV_GetBoolArrayParam(config, "bools", booleans) && booleans[0] == 1 && booleans[1] == 0 &&
         booleans[2] == 1);
    STEP(QV_GetStringArrayParamStringSize(config, "strings", 0) == 1);
    STEP(QV_GetStringArrayParamStringSize(config, "strings", 3) == -1);
    STEP(QV_GetStringArrayParam(config, "strings", buffers) && text[0] == '\0' &&
         strcmp(rest, "a\rb\r\nc") == 0);
    STEP(QV_GetArrayParamSize(config, "empty") == 0 && QV_GetStringArrayParam(config, "empty", buffers));
    STEP(!QV_IsParamExits(config, "deleted") && QV_IsParamExits(config, "empty"));
    QV_CloseConfig(config);
    return 0;
}
