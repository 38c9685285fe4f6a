/* SPDX-License-Identifier: GPL-3.0-or-later */
#pragma once

/*
 * The settings store for C: one property-list file holds one dictionary of parameters. Changes live in memory until
 * QV_SaveConfig writes all of it, as XML.
 *
 * Names and strings are UTF-8 with a terminating zero. Results are 1 for success and 0 for failure, -1 where a size
 * fails; a null handle or name is a failure, and so is a value of another type, but that any number reads as an
 * integer, a double and a boolean alike: a real without its fraction, what is out of range as the nearest int. What
 * fails leaves its output untouched unless said otherwise. No locking.
 */

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QV_Config QV_Config;

/* One byte: 0 is false, anything else true; 0 or 1 when read. */
typedef unsigned char QV_Bool;

/*
 * The path of the system-wide file (withSpace not 0) or of the user's file, in a buffer that the next call
 * overwrites. A path above 1024 bytes is cut; empty for a null name. The user's file lies under $HOME, or where that
 * is unset or empty under the home folder that the password database names.
 */
const char* QV_GetDefaultAppConfigFileName(const char* applicationName, int withSpace);

/*
 * Null when the file is no property list. When it cannot be read: null or, with createIfNotExist, an empty
 * dictionary, which no file holds before it is saved. To be closed with QV_CloseConfig.
 */
QV_Config* QV_OpenConfig(const char* path, int createIfNotExist);

/* Reads the file again, dropping unsaved changes; on failure the contents stay as they were. */
int QV_ReloadConfig(QV_Config* config);

/* Replaces the file as a whole or, on failure, not at all. Text that XML cannot hold is a failure. */
int QV_SaveConfig(const QV_Config* config);

/* Frees the handle without saving. */
void QV_CloseConfig(QV_Config* config);

int QV_IsParamExits(const QV_Config* config, const char* name);

/* Success as well when there was none. */
int QV_DeleteParam(QV_Config* config, const char* name);

/* Elements. */
int QV_GetArrayParamSize(const QV_Config* config, const char* name);

/* Bytes, that of the terminating zero included. */
int QV_GetStringParamSize(const QV_Config* config, const char* name);
int QV_GetStringArrayParamStringSize(const QV_Config* config, const char* name, int index);

int QV_GetIntParam(const QV_Config* config, const char* name, int* value);
int QV_GetDoubleParam(const QV_Config* config, const char* name, double* value);
int QV_GetBoolParam(const QV_Config* config, const char* name, QV_Bool* value);

/* At most `maximum` bytes and then a terminating zero: the buffer holds maximum + 1. */
int QV_GetStringParam(const QV_Config* config, const char* name, char* buffer, int maximum);

/*
 * Every element in order into what the caller has sized after the queries above. An element of another type, or a
 * null buffer among `buffers`, is a failure with the elements before it written.
 */
int QV_GetIntArrayParam(const QV_Config* config, const char* name, int* values);
int QV_GetDoubleArrayParam(const QV_Config* config, const char* name, double* values);
int QV_GetBoolArrayParam(const QV_Config* config, const char* name, QV_Bool* values);
int QV_GetStringArrayParam(const QV_Config* config, const char* name, char** buffers);

/* In place of whatever value the name had. A count of 0 or less is an empty array. */
int QV_SetIntParam(QV_Config* config, const char* name, int value);
int QV_SetDoubleParam(QV_Config* config, const char* name, double value);
int QV_SetBoolParam(QV_Config* config, const char* name, QV_Bool value);
int QV_SetStringParam(QV_Config* config, const char* name, const char* value);
int QV_SetIntArrayParam(QV_Config* config, const char* name, const int* values, int count);
int QV_SetDoubleArrayParam(QV_Config* config, const char* name, const double* values, int count);
int QV_SetBoolArrayParam(QV_Config* config, const char* name, const QV_Bool* values, int count);
int QV_SetStringArrayParam(QV_Config* config, const char* name, const char* const* values, int count);

#ifdef __cplusplus
}
#endif
