/* SPDX-License-Identifier: GPL-3.0-or-later */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* Both give the line of the first step that went wrong; 0 when none did. */
int store_every_kind(const char* path);
int read_every_kind(const char* path);

#ifdef __cplusplus
}
#endif
